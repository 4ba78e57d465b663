#include "Servers.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <simdjson.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

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
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, SOMAXCONN) != 0)
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

/// What a server does with its clients. `Prepare` gets each message before it is answered.
template <class Prepare>
class Clients
{
public:
    explicit Clients(Prepare prepare) : prepare(std::move(prepare)) {}

    void answer(int client)
    {
        const ssize_t size = recv(client, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size == 0)
            forget(client);
        // Of a message that comes in pieces the last one is answered.
        if (size <= 0 || buffer[static_cast<std::size_t>(size) - 1] != '\n')
            return;
        prepare(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
        if (size == static_cast<ssize_t>(SUBSCRIPTION.size()))
            subscribers.push_back(client);
        else
            for (int subscriber : subscribers)
                send(subscriber, NOTIFICATION.data(), NOTIFICATION.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        send(client, ANSWER.data(), ANSWER.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }

private:
    void forget(int client)
    {
        close(client);
        std::erase(subscribers, client);
    }

    Prepare prepare;
    std::vector<int> subscribers;
    std::array<char, 65536> buffer;
};

template <class Prepare>
[[noreturn]] void serve(const std::string& path, Prepare prepare)
{
    const int listener = listenOn(path);
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    watch(epoll, listener);
    std::array<epoll_event, 16> events{};
    Clients<Prepare> clients(std::move(prepare));
    for (;;) {
        const int count = epoll_wait(epoll, events.data(), events.size(), -1);
        for (int i = 0; i < count; ++i) {
            const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
            if (descriptor == listener)
                watch(epoll, accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
            else
                clients.answer(descriptor);
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
    serve(path, [&](std::string_view message) {
        messages.parse(message);
        const std::size_t begin = message.find('{', 1);
        parameters.parse(message.substr(begin, message.rfind('}') - begin));
    });
}

} // namespace Corvane::Benchmark
