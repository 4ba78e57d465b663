#pragma once

#include "RPCAnswer.h"
#include "RPCLink.h"
#include <atomic>
#include <corvane/common/ActiveObject.h>
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCClient.h>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace Corvane
{

/// The subscription of a client: a connection of its own, read by a thread of its own, made again when it is lost.
class RPCClient::Subscription : private ActiveObject
{
public:
    /// Subscribes and starts to deliver. @throws RPCError
    Subscription(const std::string& serverName, const std::vector<std::string>& patterns,
                 NotificationHandler onNotification, ConnectionHandler onConnection,
                 RPCLink::Clock::time_point deadline);
    ~Subscription() override;

private:
    int thread() override;
    void connect(RPCLink::Clock::time_point deadline);
    bool reconnect();
    void waitForServer(int folderWatch, int timeoutMs);
    void deliverUntilLost();
    void tellConnected(bool connected);

    const std::string serverName;
    const std::string parameters; ///< of rpc.subscribe
    const NotificationHandler onNotification;
    const ConnectionHandler onConnection;
    FileDescriptor wakeUp;
    std::atomic<bool> stopping{false};
    std::optional<RPCLink> link;
    std::deque<RPCAnswer> early; ///< notifications that came before the answer to the subscription
};

} // namespace Corvane
