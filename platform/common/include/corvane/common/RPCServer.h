#pragma once

#include <atomic>
#include <corvane/common/RPCDescription.h>
#include <corvane/foundation/Export.h>
#include <corvane/foundation/Mutex.h>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/interfaces/IRPC.h>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Corvane
{

class RPCTransport;
namespace RPCMessage
{
struct Call;
}

/// A control server: answers named calls of local clients and tells subscribers what changes.
///
/// A derived class fills `interfaces` before `init()`. Calls are handled one at a time on the server's own thread,
/// which sleeps while nobody calls. Notifications are written by the thread that raises them, straight to the
/// subscribers. A handler must not destroy the server or shut it down.
class CORVANE_EXPORT RPCServer : public virtual IRPC::IRPCNotifier
{
public:
    /// Answers a call with the text of a reply object.
    using Handler = std::string (RPCServer::*)(const IRPC::RPCSynchronousMethodObject&);
    using MethodTable = std::map<std::string, Handler>;

    static constexpr unsigned int DEFAULT_CONNECTION_LIMIT = 64;

    /// @param name  under which clients find the server; any bytes but NUL
    explicit RPCServer(const char* name);
    RPCServer(const RPCServer&) = delete;
    RPCServer& operator=(const RPCServer&) = delete;

    /// Looks the interface up, then the method, and calls its handler. What the handler throws becomes an error reply.
    virtual std::string handleRPCSynchronousMethod(const IRPC::RPCSynchronousMethodObject& request);
    /// The same for a call that is never answered.
    virtual void handleRPCAsynchronousMethod(const IRPC::RPCAsynchronousMethodObject& request);
    /// Tells the subscribers, and the listeners in this process.
    void handleRPCNotification(const IRPC::RPCNotificationObject& notification) override;
    /// Brings the server up under its name.
    /// @throws RPCError  the name or the folder cannot be used, or a server of that name lives already
    virtual void init();
    /// Takes the server down: a handler that runs is waited for, every connection is closed, the name becomes free.
    /// Without effect when the server is not up.
    virtual void shutdown();
    /// Handles the text of one JSON-RPC message, or of a batch, as if a client had sent it.
    /// @return the text of the answer, empty when none is due
    virtual std::string handleRPCSynchronousMethodPayload(const std::string& payload);
    /// @param name     of the notification, "IWindow::onOpacityChange"
    /// @param payload  the text of one JSON object
    /// Thread-safe; does not block and, for a subscriber that reads, does not allocate.
    virtual void handleRPCNotification(const std::string& name, const std::string& payload);
    /// @return the path of the socket that belongs to the server's name
    virtual std::string getFixedRPCAddress() const;
    ~RPCServer() override;

    void addListener(IListener* listener) override;
    void removeListener(IListener* listener) override;

    const std::string& getName() const;
    /// How many clients may be connected at once; further ones are turned away. To be set before `init()`.
    void setConnectionLimit(unsigned int limit);

protected:
    /// Waits until no handler runs. On the server's own thread it returns at once.
    void waitForHandler();
    /// Waits until no handler runs, and lets none run again: further calls are refused. Subscribers go on being told.
    /// Not from a handler.
    void endCalls();
    /// Lets the server refuse subscriptions. To be set before `init()`.
    /// @param check  called with `RPCCaller::getCurrent()` set and no lock of the server held but that of handlers;
    ///               tells why this client may not subscribe, or nothing
    void setSubscriptionCheck(std::function<std::string()> check);

    std::string name;
    std::map<std::string, MethodTable> interfaces;
    RPCServerDescription description; ///< what `rpc.discover` tells of the methods besides their names

private:
    friend class RPCTransport;

    std::string handleCall(const RPCMessage::Call& call);
    std::string discover() const;

    unsigned int connectionLimit = DEFAULT_CONNECTION_LIMIT;
    Mutex listenersMutex;
    std::vector<IRPC::IRPCListener*> listeners;
    std::atomic<bool> hasListeners{false}; ///< read without the lock, which a signal handler must not wait for
    const std::unique_ptr<RPCTransport> transport;
};

} // namespace Corvane
