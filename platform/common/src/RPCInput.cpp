#include "RPCInput.h"

#include <array>
#include <cerrno>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/ReturnCode.h>
#include <sys/socket.h>

namespace Corvane
{

namespace
{

/// A buffer that has become larger than this is not kept once it is empty.
constexpr std::size_t LARGEST_KEPT = 4096;

} // namespace

RPCInput::Outcome RPCInput::receive(int socket)
{
    std::array<char, 32 * 1024> received;
    const ssize_t size = recv(socket, received.data(), received.size(), MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return Outcome::NOTHING;
    if (size <= 0)
        return Outcome::CLOSED;
    dropTaken();
    buffer.append(received.data(), static_cast<std::size_t>(size));
    return Outcome::RECEIVED;
}

std::optional<std::string> RPCInput::takeMessage()
{
    const std::size_t end = buffer.find('\n', searched);
    if (end == buffer.npos)
        searched = buffer.size();
    if ((end == buffer.npos ? buffer.size() : end) - taken > limit)
        throw RPCError(RPCError::Reason::BAD_ANSWER, RETURN_REFUSED_BY_SYSTEM,
                       "the server's message is longer than " + std::to_string(limit) + " bytes");
    if (end == buffer.npos)
        return std::nullopt;
    std::string message = buffer.substr(taken, end - taken);
    taken = searched = end + 1;
    return message;
}

void RPCInput::dropTaken()
{
    if (taken == buffer.size() && buffer.capacity() > LARGEST_KEPT)
        std::string().swap(buffer); // an assignment would keep the memory
    else
        buffer.erase(0, taken);
    searched -= taken;
    taken = 0;
}

} // namespace Corvane
