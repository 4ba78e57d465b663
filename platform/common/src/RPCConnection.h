#pragma once

#include <corvane/common/FileDescriptor.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/uio.h>
#include <vector>

namespace Corvane
{

/// One client of a server: what it has sent so far, what waits for it, and what it subscribed to.
///
/// `input` belongs to the transport's thread alone; everything else is guarded by the transport's mutex.
class RPCConnection
{
public:
    /// What may wait for a client that does not read, in bytes.
    static constexpr std::size_t OUTPUT_LIMIT = 1024 * 1024;

    /// How many patterns one client may subscribe to.
    static constexpr std::size_t SUBSCRIPTION_LIMIT = 256;

    enum class Loss {
        NONE,
        GONE,  ///< the client has closed the connection
        BEHIND ///< more than OUTPUT_LIMIT waits for it
    };

    explicit RPCConnection(FileDescriptor socket) : socket(std::move(socket)) {}

    int getSocket() const { return socket.get(); }

    /// Sends the pieces as one message, at once as far as the socket takes it; the rest waits. Without effect on a
    /// client that is lost.
    void send(const iovec* pieces, int count);
    /// Sends what waits.
    void flush();
    bool hasOutput() const { return sent < output.size(); }
    Loss getLoss() const { return loss; }
    /// Notes that the client is lost and wakes the transport's thread, which closes the connection.
    void lose(Loss reason);

    /// @return false when that would be too many; nothing is subscribed then
    bool subscribe(std::vector<std::string> patterns);
    void unsubscribe(const std::vector<std::string>& patterns);
    bool hasSubscriptions() const { return !subscriptions.empty(); }
    bool isSubscribedTo(std::string_view notification) const;

    std::string input;         ///< the beginning of a message whose end has not come yet
    bool closing = false;      ///< nothing more is read; closed when everything is sent
    std::uint32_t watched = 0; ///< the events that the transport waits for on this socket

private:
    void keep(const iovec* pieces, int count, std::size_t taken);

    FileDescriptor socket;
    std::string output;
    Loss loss = Loss::NONE;
    std::size_t sent = 0; ///< so much of `output` is gone already
    std::vector<std::string> subscriptions;
};

} // namespace Corvane
