#include "RPCLink.h"

#include "RPCAddress.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/ReturnCode.h>
#include <poll.h>
#include <sys/socket.h>

namespace Corvane
{

namespace
{

RPCError timedOut()
{
    return {RPCError::Reason::TIMED_OUT, RETURN_TIMED_OUT, "Timed out"};
}

RPCError disconnected()
{
    return {RPCError::Reason::DISCONNECTED, RETURN_REFUSED_BY_SYSTEM, "the server has closed the connection"};
}

std::chrono::milliseconds remaining(RPCLink::Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - RPCLink::Clock::now());
    return std::max(left, std::chrono::milliseconds::zero());
}

/// @param patience  for a server that has many waiting already; 0: none
FileDescriptor connectTo(const std::string& serverName, std::chrono::milliseconds patience)
{
    const std::string path = RPCAddress::socketPath(serverName);
    FileDescriptor socket = RPCAddress::connectTo(RPCAddress::socketAddress(path), patience);
    if (socket.isOpen()) {
        RPCAddress::requireTrustedServer(socket.get(), serverName);
        return socket;
    }
    if (errno == EAGAIN)
        throw timedOut();
    if (errno == ENOENT || errno == ECONNREFUSED)
        throw RPCError(RPCError::Reason::NO_SERVER, RETURN_REFUSED_BY_SYSTEM,
                       "no server " + serverName + " listens on " + path);
    throw RPCAddress::systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot connect to " + path);
}

} // namespace

RPCLink::Clock::time_point RPCLink::deadlineAfter(std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds LONGEST = std::chrono::years(1);
    return Clock::now() + std::min(patience, LONGEST);
}

FileDescriptor RPCLink::connectNow(const std::string& serverName)
{
    return connectTo(serverName, {});
}

RPCLink::RPCLink(const std::string& serverName, Clock::time_point deadline)
    : socket(connectTo(serverName, std::max(remaining(deadline), std::chrono::milliseconds(1))))
{
}

bool RPCLink::isClosed() const
{
    char byte{};
    return recv(socket.get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

void RPCLink::send(std::string message, Clock::time_point deadline)
{
    // A message is a line; in JSON a line feed can only be white space.
    std::replace(message.begin(), message.end(), '\n', ' ');
    message += '\n';
    std::string_view rest = message;
    while (!rest.empty()) {
        const ssize_t sent = ::send(socket.get(), rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0)
            rest.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno == EAGAIN)
            wait(POLLOUT, deadline, -1);
        else if (errno == EPIPE || errno == ECONNRESET)
            return; // a server that turns a client away says why before it closes: that is still to be received
        else if (errno != EINTR)
            throw disconnected();
    }
}

std::optional<std::string> RPCLink::receive(Clock::time_point deadline, int wakeUp)
{
    for (;;) {
        if (auto message = input.takeMessage())
            return message;
        if (!wait(POLLIN, deadline, wakeUp))
            return std::nullopt;
        if (input.receive(socket.get()) == RPCInput::Outcome::CLOSED)
            throw disconnected();
    }
}

bool RPCLink::wait(short events, Clock::time_point deadline, int wakeUp)
{
    for (;;) {
        std::array<pollfd, 2> waits{pollfd{.fd = socket.get(), .events = events, .revents = 0},
                                    pollfd{.fd = wakeUp, .events = POLLIN, .revents = 0}};
        const bool endless = deadline == Clock::time_point::max();
        const auto patience =
            endless ? -1 : static_cast<int>(std::min<std::int64_t>(remaining(deadline).count(), INT_MAX));
        const int ready = poll(waits.data(), waits.size(), patience);
        if (ready > 0)
            return waits[1].revents == 0;
        if (ready == 0 && remaining(deadline).count() == 0)
            throw timedOut();
    }
}

} // namespace Corvane
