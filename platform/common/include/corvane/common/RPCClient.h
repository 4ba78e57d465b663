#pragma once

#include <chrono>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Export.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Corvane
{

/// A client of one control server.
///
/// A call blocks the calling thread until the answer or the deadline; calls of several threads go out one after the
/// other. The connection is made by the first call and made again by the first call after it was lost. Thread-safe.
///
///     RPCClient client("APP1234");
///     std::string opacity = client.call("IWindow::getOpacity");
class CORVANE_EXPORT RPCClient
{
public:
    static constexpr std::chrono::milliseconds DEFAULT_DEADLINE{5000};

    /// @param name  and payload of the notification, the payload as the text of a JSON object
    using NotificationHandler = std::function<void(const std::string& name, const std::string& payload)>;
    /// @param connected  true when the server has answered the subscription, false when it is gone
    using ConnectionHandler = std::function<void(bool connected)>;

    /// Connects to nothing yet.
    explicit RPCClient(std::string serverName);
    /// Ends the subscription and waits for a handler of it that runs; so it is not to be called from a handler.
    ~RPCClient();
    RPCClient(const RPCClient&) = delete;
    RPCClient& operator=(const RPCClient&) = delete;

    const std::string& getServerName() const;

    /// Calls a method and waits for its result.
    /// @param method      "IWindow::setOpacity"
    /// @param parameters  the text of a JSON object
    /// @return the result, as JSON text; "null" for a method without one
    /// @throws RPCError  see its reasons
    std::string call(const std::string& method, const std::string& parameters = "{}",
                     std::chrono::milliseconds deadline = DEFAULT_DEADLINE);

    /// Subscribes to notifications, on a connection and a thread of their own. Once a client.
    /// When the server goes, the subscription is made again as soon as a server of that name is back. One that is there
    /// and does not take it is tried again every second.
    /// @param patterns  names, "IApplication::*" for all of an interface, "*" for all
    /// @param onNotification  called on the client's thread, in the order of the server
    /// @param onConnection    called on the client's thread, may be empty
    /// @throws RPCError  the server is not there or refuses; nothing is subscribed then. A server that is there has
    ///                   answered when this returns: whatever happens afterwards is delivered.
    void subscribe(std::vector<std::string> patterns, NotificationHandler onNotification,
                   ConnectionHandler onConnection = {}, std::chrono::milliseconds deadline = DEFAULT_DEADLINE);

    /// @return the names of the servers that live on this machine, sorted
    static std::vector<std::string> listServers();
    /// @return the names of the servers that died and left their sockets behind, sorted. A server that starts at this
    ///         very moment may be among them.
    static std::vector<std::string> listDeadServers();

private:
    class CORVANE_HIDDEN Caller;
    class CORVANE_HIDDEN Subscription;

    const std::string serverName;
    const std::unique_ptr<Caller> caller;
    std::unique_ptr<Subscription> subscription;
};

} // namespace Corvane
