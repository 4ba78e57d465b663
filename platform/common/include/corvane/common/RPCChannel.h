#pragma once

#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Export.h>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Corvane
{

class RPCInput;

/// A connection to one control server that never waits, for a program with a loop of its own: one thread can listen to
/// any number of servers.
///
/// The program waits until `getDescriptor()` can be read, receives, and takes the messages. It may leave messages for
/// later: what it does not receive stays with the system, and what the system does not hold with the server, which
/// drops a subscriber that lets 1 MiB wait. A connection that has ended is not made again: the program makes another
/// channel. Belongs to whoever made it; not synchronised.
///
///     RPCChannel channel("APP1234");
///     const unsigned int subscription = channel.subscribe({"IApplication::*"});
///     while (poll(...) > 0 && channel.receive())
///         while (const auto message = channel.take())
///             ...
class CORVANE_EXPORT RPCChannel
{
public:
    static constexpr std::size_t DEFAULT_MESSAGE_LIMIT = 1024 * 1024;

    /// What the server has said: a notification, or the answer to a call.
    struct Message {
        std::string notification;      ///< its name, "IWindow::onOpacityChange"; empty for an answer
        std::string payload;           ///< of the notification, or the result of the call, as JSON text
        unsigned int call = 0;         ///< the number of the call that is answered; 0 for an answer to nothing known
        std::optional<RPCError> error; ///< why there is no result: CALL_FAILED
    };

    /// Connects.
    /// @param messageLimit  the longest message of the server, in bytes
    /// @throws RPCError  NO_SERVER; TIMED_OUT: the server lives and takes no connection just now; BAD_ADDRESS,
    ///                   SYSTEM_FAILURE
    explicit RPCChannel(const std::string& serverName, std::size_t messageLimit = DEFAULT_MESSAGE_LIMIT);
    /// Closes the connection. Does not wait.
    ~RPCChannel();
    RPCChannel(const RPCChannel&) = delete;
    RPCChannel& operator=(const RPCChannel&) = delete;

    /// @return the descriptor to wait with until it can be read; it stays the channel's
    int getDescriptor() const;

    /// Sends a call. Nobody watches over a deadline.
    /// @param method      "IWindow::setOpacity"
    /// @param parameters  the text of a JSON object
    /// @return the number under which the answer will come, 1 for the first call
    /// @throws RPCError  DISCONNECTED: the server has left, or left so much unread that the system takes no more.
    ///                   Nothing can be sent on this channel any more, but what the server has said can be received
    unsigned int call(const std::string& method, const std::string& parameters = "{}");
    /// Asks for notifications. What happens after the answer is delivered, and what comes before it counts as well.
    /// @param patterns  names, "IApplication::*" for all of an interface, "*" for all
    /// @return as `call`. @throws RPCError  as `call`
    unsigned int subscribe(const std::vector<std::string>& patterns);

    /// Receives what the system has ready, 32 KiB at most.
    /// @return false when the server has closed the connection; what it said before can still be taken
    /// @throws std::bad_alloc  then what had come last is lost: give the channel up
    bool receive();
    /// Takes the next message that has come whole.
    /// @return nothing when there is none yet
    /// @throws RPCError  BAD_ANSWER: the message is too long, or cannot be understood. Give the channel up
    std::optional<Message> take();

private:
    const FileDescriptor socket;
    const std::unique_ptr<RPCInput> input;
    unsigned int lastCall = 0;
    bool isBroken = false; ///< a message was sent in part
};

} // namespace Corvane
