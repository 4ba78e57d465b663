#pragma once

#include "box/Box.h"
#include "supervision/Supervisor.h"
#include "windows/FocusControl.h"
#include "windows/WindowService.h"

#include <corvane/common/RPCServer.h>

namespace Procmand
{

/// The control server of the process manager, named "ORU".
///
/// Its handlers run under the lock of the box. None makes a remote call or waits: what takes its time is accepted, and
/// what comes of it is a notification.
class ManagerServer : public Corvane::RPCServer
{
public:
    ManagerServer(Box& box, Supervisor& supervisor, FocusControl& focus, WindowService& windows);
    ~ManagerServer() override;

    std::string handleRPCSynchronousMethod(const Corvane::IRPC::RPCSynchronousMethodObject& request) override;

private:
    using Request = Corvane::IRPC::RPCSynchronousMethodObject;

    void fillApplicationMethods();
    void fillResourceMethods();
    void fillCompositingMethods();

    std::string launch(const Request& request);
    std::string stop(const Request& request);
    std::string restart(const Request& request);
    std::string registerApplication(const Request& request);
    std::string getApplications(const Request& request);
    std::string getHistory(const Request& request);

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

    Box& box;
    Supervisor& supervisor;
    FocusControl& focus;
    WindowService& windows;
    unsigned int screenshots = 0; ///< how many were asked for
};

/// What the server tells about its methods and notifications.
extern const Corvane::RPCServerDescription MANAGER_DESCRIPTION;

} // namespace Procmand
