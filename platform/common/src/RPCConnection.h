#pragma once

#include <atomic>
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCCaller.h>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <sys/uio.h>
#include <vector>

namespace Corvane
{

/// @return how many bytes they have together
std::size_t measure(std::span<const iovec> pieces);

/// One client of a server: what it has sent so far, what waits for it, and what it subscribed to.
///
/// `caller`, `input`, `closing` and the two marks of what was told belong to the transport's thread alone; everything
/// else is guarded by the transport's mutex.
class RPCConnection
{
public:
    /// How many bytes of notifications may wait for a client that does not fetch them.
    static constexpr std::size_t NOTIFICATION_LIMIT = 1024 * 1024;

    /// How many patterns one client may subscribe to.
    static constexpr std::size_t SUBSCRIPTION_LIMIT = 256;

    enum class Loss {
        NONE,
        GONE,     ///< the client has closed the connection
        BEHIND,   ///< more than NOTIFICATION_LIMIT would wait for it
        NO_MEMORY ///< there is none for what would wait for it
    };

    enum class Kind { ANSWER, NOTIFICATION };

    explicit RPCConnection(FileDescriptor socket) : caller(socket.get()), socket(std::move(socket)) {}

    int getSocket() const { return socket.get(); }

    /// Sends the pieces as one message, at once as far as the socket takes it; the rest waits. Without effect on a
    /// client that is lost. An answer may have any size; at most one waits at a time, for nothing further is handled
    /// before it is gone.
    void send(Kind kind, std::span<const iovec> pieces) noexcept;
    /// Sends what waits.
    void flush() noexcept;
    /// @return whether something waits to be sent. Thread-safe.
    bool hasOutput() const { return waits; }
    /// Thread-safe.
    Loss getLoss() const { return loss; }
    /// Notes that the client is lost and wakes the transport's thread, which closes the connection.
    void lose(Loss reason);

    /// @param patterns  sorted, each once; what is subscribed already is no further subscription
    /// @return false when that would be too many; nothing is subscribed then
    bool subscribe(std::vector<std::string> patterns);
    /// @param patterns  sorted
    void unsubscribe(const std::vector<std::string>& patterns);
    bool hasSubscriptions() const { return !subscriptions.empty(); }
    bool isSubscribedTo(std::string_view notification) const;

    RPCCaller caller;
    std::string input;         ///< received and not handled: what must wait, and the beginning of a message
    bool closing = false;      ///< nothing more is read; closed when everything is sent
    bool toldBatch = false;    ///< the log has told that answers to a batch of this client were too long
    bool toldPatterns = false; ///< the log has told that this client wanted too many subscriptions
    std::uint32_t watched = 0; ///< the events that the transport waits for on this socket

private:
    void keep(Kind kind, std::span<const iovec> pieces, std::size_t taken);
    std::size_t countWaitingNotifications() const;
    void compact();

    FileDescriptor socket;
    std::string output;
    std::atomic<bool> waits{false};      ///< part of `output` is not sent; written under the mutex
    std::atomic<Loss> loss = Loss::NONE; ///< written under the mutex
    std::size_t sent = 0;                ///< so much of `output` is gone already
    std::size_t answerBegin = 0; ///< where in `output` the answer stands; everything else there is notifications
    std::size_t answerEnd = 0;
    std::vector<std::string> subscriptions;
};

} // namespace Corvane
