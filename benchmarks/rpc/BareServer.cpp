#include "Servers.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <simdjson.h>
#include <string_view>
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

/// A parser and its input, which keep their memory.
class Parser
{
public:
    void parse(std::string_view text)
    {
        input.assign(text);
        input.append(simdjson::SIMDJSON_PADDING, ' ');
        if (parser.parse(input.data(), text.size(), false).error() != simdjson::SUCCESS)
            std::abort();
    }

private:
    std::string input;
    simdjson::dom::parser parser;
};

/// Serves `path`: `prepare` gets each message before it is answered.
template <class Prepare>
[[noreturn]] void serve(const std::string& path, Prepare prepare)
{
    const int listener = listenOn(path);
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    watch(epoll, listener);
    std::array<epoll_event, 16> events{};
    std::array<char, 65536> buffer;
    const auto answer = [&](int client) {
        const ssize_t size = recv(client, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size == 0)
            close(client);
        if (size <= 0)
            return;
        prepare(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
        send(client, ANSWER, sizeof ANSWER - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    };
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

} // namespace

void runBareServer(const std::string& path)
{
    serve(path, [](std::string_view) {});
}

void runStrictServer(const std::string& path)
{
    Parser messages;
    Parser parameters;
    sigset_t signals;
    sigfillset(&signals);
    serve(path, [&](std::string_view message) {
        messages.parse(message);
        sigset_t previous;
        pthread_sigmask(SIG_SETMASK, &signals, &previous);
        const std::size_t begin = message.find('{', 1);
        parameters.parse(message.substr(begin, message.rfind('}') - begin));
        pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    });
}

} // namespace Corvane::Benchmark
