#pragma once

#include "DeferringMutex.h"
#include "LargeTexts.h"
#include "RPCConnection.h"
#include "RPCEndpoint.h"
#include "RPCMessage.h"
#include <array>
#include <atomic>
#include <chrono>
#include <corvane/common/ActiveObject.h>
#include <corvane/common/FileDescriptor.h>
#include <corvane/foundation/Mutex.h>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Corvane
{

class RPCServer;

/// The connections of a server and the thread that serves them.
///
/// The thread sleeps until a client calls; it reads, lets the server handle the calls and sends the answers. While
/// output waits for a client, nothing further of that client is read or handled. What goes wrong while a client is
/// served ends its connection at worst.
///
/// Notifications are sent by the threads that raise them. Two locks: `connectionsMutex` guards what is sent and who
/// subscribed, and is never held while anything is called that could call back; `handlerMutex` is held while a message
/// is handled. The handler of a fatal signal announces STATE_ABORTED on the way of the notifications: the signal waits
/// where it interrupts a thread that holds `connectionsMutex`.
class RPCTransport : private ActiveObject
{
public:
    explicit RPCTransport(RPCServer& server);
    ~RPCTransport() override;

    /// Takes the server's name on this machine and starts to serve it; without effect when it is served already.
    /// @throws RPCError, Exception
    void open();
    /// Waits for a handler that runs, closes every connection and gives the name back. Not from the transport's thread.
    void close();

    /// Sends a notification to its subscribers. Thread-safe; neither blocks nor, for subscribers that read, allocates.
    void notify(std::string_view name, std::string_view payload);

    /// Waits until no message is being handled; returns at once on the transport's own thread.
    void waitForHandler();
    /// Waits as above; no handler is called after it. Not from the transport's thread.
    void endCalls();
    /// @param check  see `RPCServer::setSubscriptionCheck`; before `open`
    void setSubscriptionCheck(std::function<std::string()> check);

private:
    int thread() override;
    void sendNotification(std::string_view name, std::span<const iovec> pieces);
    void noteLength(std::size_t length);
    void giveMemoryBack();
    void step(int descriptor, std::uint32_t events);
    void abandon(int descriptor, const char* reason);
    void accept();
    void acceptWithReserve();
    /// @return whether a user has so many connections already that others would find no place. Root and the server's
    ///         own user may have all.
    bool hasItsShare(uid_t user) const;
    void turnAway(FileDescriptor socket, const char* reason);
    void serve(RPCConnection& connection, std::uint32_t events);
    void resume(RPCConnection& connection);
    void read(RPCConnection& connection);
    void handleInput(RPCConnection& connection, std::string_view data);
    void handleMessage(RPCConnection& connection, std::string_view message);
    RPCMessage::Answer answerMessage(RPCConnection& connection, std::string_view message);
    std::string handleCall(RPCConnection& connection, const RPCMessage::Call& call);
    std::string handleSubscription(RPCConnection& connection, const RPCMessage::Call& call);
    void refuse(RPCConnection& connection, int code, const std::string& reason);
    void finish(RPCConnection& connection);
    void send(RPCConnection& connection, std::string text);
    void watch(RPCConnection& connection);
    void drop(RPCConnection& connection);
    void log(int line, int socket, const char* event, const char* reason) const;
    void countSubscribers();

    RPCServer& server;
    std::function<std::string()> subscriptionCheck;
    std::optional<RPCEndpoint> endpoint;
    FileDescriptor epoll;
    FileDescriptor wakeUp;
    FileDescriptor reserve; ///< given up to accept a client and turn it away when the process has no descriptor left
    std::atomic<bool> stopping{false};
    std::atomic<pthread_t> ownThread{};

    Mutex handlerMutex;
    bool takesCalls = true; ///< guarded by `handlerMutex`
    DeferringMutex connectionsMutex;
    std::map<int, std::unique_ptr<RPCConnection>> connections; ///< by socket
    std::atomic<unsigned int> subscribers{0}; ///< connections with a subscription; read without the lock
    std::array<char, 64 * 1024> buffer;
    std::chrono::steady_clock::time_point lastLarge; ///< when a large message was last handled
    std::optional<LargeTexts> largeTexts;            ///< from the first of them until no more come
};

} // namespace Corvane
