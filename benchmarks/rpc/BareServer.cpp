#include "Servers.h"

#include <array>
#include <cstdlib>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvane::Benchmark
{

namespace
{

int listenOn(const std::string& path)
{
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 8) != 0)
        std::abort();
    return listener;
}

void watch(int epoll, int descriptor)
{
    epoll_event event{.events = EPOLLIN, .data = {.fd = descriptor}};
    epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event);
}

void answer(int client)
{
    std::array<char, 65536> buffer;
    const ssize_t size = recv(client, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size > 0)
        send(client, ANSWER, sizeof ANSWER - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    else if (size == 0)
        close(client);
}

} // namespace

void runBareServer(const std::string& path)
{
    const int listener = listenOn(path);
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    watch(epoll, listener);
    std::array<epoll_event, 16> events{};
    for (;;) {
        const int count = epoll_wait(epoll, events.data(), events.size(), -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
            if (descriptor == listener)
                watch(epoll, accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
            else
                answer(descriptor);
        }
    }
}

} // namespace Corvane::Benchmark
