#include "HostileServer.h"

#include <array>
#include <corvane/common/RPCServer.h>
#include <cstring>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

/// @return whether there is something to take before the end
bool waitFor(int descriptor, int ending)
{
    std::array<pollfd, 2> waits{pollfd{.fd = descriptor, .events = POLLIN, .revents = 0},
                                pollfd{.fd = ending, .events = POLLIN, .revents = 0}};
    return poll(waits.data(), waits.size(), -1) > 0 && waits[1].revents == 0;
}

} // namespace

HostileServer::HostileServer(const std::string& name, Answer answer)
    : answer(std::move(answer)),
      path(RPCServer(name.c_str()).getFixedRPCAddress()),
      listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      ending(eventfd(0, EFD_CLOEXEC))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener.get(), 16) != 0)
        throw std::runtime_error("cannot listen on " + path + ": " + std::strerror(errno));
    thread = std::thread([this] { serve(); });
}

HostileServer::~HostileServer()
{
    eventfd_write(ending.get(), 1);
    thread.join();
    unlink(path.c_str());
}

void HostileServer::serve()
{
    std::vector<std::thread> clients;
    while (waitFor(listener.get(), ending.get()))
        if (const int client = accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC); client >= 0)
            clients.emplace_back([this, client] { serveClient(client); });
    for (std::thread& client : clients)
        client.join();
}

void HostileServer::serveClient(int client)
{
    const FileDescriptor socket(client);
    std::string input;
    std::array<char, 4096> buffer;
    while (waitFor(client, ending.get())) {
        const ssize_t size = recv(client, buffer.data(), buffer.size(), 0);
        if (size <= 0)
            return;
        input.append(buffer.data(), static_cast<std::size_t>(size));
        for (std::size_t end = input.find('\n'); end != input.npos; end = input.find('\n')) {
            const nlohmann::json call = nlohmann::json::parse(input.substr(0, end));
            input.erase(0, end + 1);
            const std::string words =
                answer(call.value("id", nlohmann::json()).dump(), call.value("method", "")) + "\n";
            if (send(client, words.data(), words.size(), MSG_NOSIGNAL) < 0)
                return;
        }
    }
}

} // namespace Corvane::Test
