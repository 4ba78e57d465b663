#include "RawClient.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace Corvane::Test
{

RawClient::RawClient(const std::string& path) : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const timeval patience{.tv_sec = DEADLINE.count(), .tv_usec = 0};
    setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect to " + path + ": " + std::strerror(errno));
}

void RawClient::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0)
            return; // a server that refuses closes early; what it said is read by the test
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void RawClient::endInput()
{
    shutdown(socket.get(), SHUT_WR);
}

bool RawClient::fill()
{
    std::array<char, 65536> buffer;
    const ssize_t size = recv(socket.get(), buffer.data(), buffer.size(), 0);
    if (size <= 0)
        return false;
    input.append(buffer.data(), static_cast<std::size_t>(size));
    return true;
}

std::optional<std::string> RawClient::receiveLine()
{
    for (std::size_t searched = 0;;) {
        if (const auto end = input.find('\n', searched); end != input.npos) {
            std::string line = input.substr(0, end);
            input.erase(0, end + 1);
            return line;
        }
        searched = input.size();
        if (!fill())
            return std::nullopt;
    }
}

bool RawClient::awaitInput()
{
    char byte{};
    return recv(socket.get(), &byte, 1, MSG_PEEK) == 1;
}

std::string RawClient::call(std::string_view message)
{
    send(std::string(message) + "\n");
    return receiveLine().value_or("no answer");
}

bool RawClient::awaitEnd()
{
    while (fill())
        ;
    return errno != EAGAIN;
}

} // namespace Corvane::Test
