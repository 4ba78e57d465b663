#pragma once

#include "box/Box.h"
#include "screen/Pictures.h"
#include "server/Client.h"
#include "supervision/Supervisor.h"
#include "windows/FocusControl.h"
#include "windows/WindowService.h"

#include <corvane/common/RPCServer.h>
#include <optional>

namespace Procmand
{

/// The control server of the process manager, named "ORU".
///
/// Its handlers run under the lock of the box. None makes a remote call or waits: what takes its time is accepted, and
/// what comes of it is a notification. What a caller may do is looked at before, by the system's word on who that is.
class ManagerServer : public Corvane::RPCServer
{
public:
    ManagerServer(Box& box, Supervisor& supervisor, FocusControl& focus, WindowService& windows);
    ~ManagerServer() override;

    std::string handleRPCSynchronousMethod(const Corvane::IRPC::RPCSynchronousMethodObject& request) override;

private:
    using Request = Corvane::IRPC::RPCSynchronousMethodObject;

    std::string findRefusal(const std::string& method) const;
    std::string handleCall(const std::string& method, const Request& request);
    /// @return why the caller may not subscribe, empty where it may
    std::string checkSubscription();
    /// Notes that the caller may not do that. @throws std::runtime_error  the problem
    [[noreturn]] void refuse(const Request& request, const std::string& subject, const std::string& problem);
    void noteRefusal(const std::string& method, const std::string& subject, const std::string& problem);
    /// @return the window. @throws std::out_of_range  there is none. @throws std::runtime_error  it is not the caller's
    const WindowState& requireWindow(const Request& request);
    /// Makes sure that the application is the caller's, and takes it up where it is not known.
    /// @throws std::runtime_error  it is somebody else's, or the caller has too many
    void takeUp(const Request& request, const std::string& uid, pid_t pid);
    bool hasItsWindows() const;

    void fillApplicationMethods();
    void fillResourceMethods();
    void fillCompositingMethods();

    std::string launch(const Request& request);
    std::string stop(const Request& request);
    std::string restart(const Request& request);
    std::string registerApplication(const Request& request);
    std::string getApplications(const Request& request);
    std::string getHistory(const Request& request);
    std::string getAudit(const Request& request);

    std::string getResource(const Request& request);
    std::string releaseResource(const Request& request);

    template <class T, auto OPERATION, const char* KEY>
    std::string setProperty(const Request& request);
    template <auto MEMBER>
    std::string getProperty(const Request& request);
    template <auto OPERATION>
    std::string stack(const Request& request);
    std::string getWindows(const Request& request);
    std::string setFocus(const Request& request);
    std::string screenshot(const Request& request);
    void onPicture(const std::string& file, const std::string& problem);

    Box& box;
    Supervisor& supervisor;
    FocusControl& focus;
    WindowService& windows;
    std::optional<Client> client;     ///< while a call is handled
    std::optional<Pictures> pictures; ///< from the first one on
};

/// What the server tells about its methods and notifications.
extern const Corvane::RPCServerDescription MANAGER_DESCRIPTION;

} // namespace Procmand
