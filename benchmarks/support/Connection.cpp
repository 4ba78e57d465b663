#include "Connection.h"

#include "Servers.h"

#include <algorithm>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace Corvane::Benchmark
{

Connection::Connection(const std::string& path)
{
    constexpr int ATTEMPTS = 10'000; // one a millisecond
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return;
        close(socket);
        poll(nullptr, 0, 1);
    }
    throw std::runtime_error("no server on " + path);
}

Connection::Connection(Connection&& other) noexcept : socket(std::exchange(other.socket, -1)) {}

Connection::~Connection()
{
    if (socket >= 0)
        close(socket);
}

void Connection::call()
{
    call(REQUEST);
}

void Connection::call(std::string_view request)
{
    while (!request.empty()) {
        const ssize_t sent = send(socket, request.data(), request.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            throw std::runtime_error("the server is gone");
        request.remove_prefix(static_cast<std::size_t>(sent));
    }
    expect(ANSWER);
}

void Connection::subscribe()
{
    call(SUBSCRIPTION);
}

void Connection::takeNotification()
{
    expect(NOTIFICATION);
}

std::string Connection::readToEnd()
{
    std::string last;
    for (ssize_t size = 0; (size = recv(socket, buffer.data(), buffer.size(), 0)) > 0;) {
        last.append(buffer.data(), static_cast<std::size_t>(size));
        last.erase(0, last.size() - std::min(last.size(), buffer.size()));
    }
    return last;
}

void Connection::expect(std::string_view line)
{
    const ssize_t size = recv(socket, buffer.data(), buffer.size(), 0);
    const std::string_view received(buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    if (received != line)
        throw std::runtime_error("expected " + std::string(line) + "got " + std::string(received));
}

std::string makeRequest(std::size_t size)
{
    const std::string_view end = "\"}\n";
    std::string request(REQUEST.substr(0, REQUEST.size() - 2));
    request += R"(,"x":")";
    request.append(size - request.size() - end.size(), 'a');
    return request += end;
}

std::vector<Connection> subscribe(const std::string& path, int count)
{
    std::vector<Connection> subscribers;
    for (int i = 0; i < count; ++i)
        subscribers.emplace_back(path).subscribe();
    return subscribers;
}

} // namespace Corvane::Benchmark
