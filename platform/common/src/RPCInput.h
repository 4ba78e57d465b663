#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace Corvane
{

/// What a client has received from a server, cut into its messages. Not synchronised.
class RPCInput
{
public:
    enum class Outcome {
        RECEIVED,
        NOTHING, ///< there is nothing to receive now
        CLOSED   ///< the connection has ended; what came before can still be taken
    };

    /// @param limit  the longest message, in bytes
    explicit RPCInput(std::size_t limit) : limit(limit) {}

    /// Receives what the system has ready, 32 KiB at most. Does not wait. @throws std::bad_alloc
    Outcome receive(int socket);
    /// @return the next message that is there whole, without its line feed
    /// @throws RPCError  BAD_ANSWER: it is longer than the limit
    std::optional<std::string> takeMessage();

private:
    void dropTaken();

    const std::size_t limit;
    std::string buffer;
    std::size_t taken = 0;    ///< so many bytes of `buffer` have been taken
    std::size_t searched = 0; ///< up to here `buffer` has no further line feed
};

} // namespace Corvane
