#include "RPCTransport.h"

#include "JsonText.h"
#include "RPCAddress.h"
#include "RPCCallerScope.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <corvane/common/RPCServer.h>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Deserializer.h>
#include <cstdlib>
#include <fcntl.h>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Corvane
{

namespace
{

using IRPC::RPCErrorObject;

/// For how long the memory that a large message took is kept for the next one, in milliseconds. To get it from the
/// system anew costs more than to read the message.
constexpr int KEPT_MS = 100;

void addTo(const FileDescriptor& epoll, int descriptor, std::uint32_t events)
{
    epoll_event event{.events = events, .data = {.fd = descriptor}};
    if (epoll_ctl(epoll.get(), EPOLL_CTL_ADD, descriptor, &event) != 0)
        throw RPCAddress::systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot wait for clients");
}

pid_t processOf(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

iovec piece(std::string_view text)
{
    return {.iov_base = const_cast<char*>(text.data()), .iov_len = text.size()};
}

void join(std::span<const iovec> pieces, char* text)
{
    for (const iovec& each : pieces)
        text = std::copy_n(static_cast<const char*>(each.iov_base), each.iov_len, text);
}

/// malloc_trim() leaves the unused end of a thread's own heap as it is. That is where a new block comes from, whose
/// contents nobody needs.
void giveEndOfHeapBack()
{
    constexpr std::size_t SIZE = 4 * 1024 * 1024;
    void* block = std::malloc(SIZE);
    void* begin = block;
    std::size_t room = SIZE;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    if (block != nullptr && std::align(page, SIZE - page, begin, room) != nullptr)
        madvise(begin, SIZE - page, MADV_DONTNEED);
    std::free(block);
}

} // namespace

RPCTransport::RPCTransport(RPCServer& server)
    : ActiveObject("RPCTransport"),
      server(server),
      handlerMutex("RPCTransport::handler", 0),
      connectionsMutex("RPCTransport::connections")
{
}

RPCTransport::~RPCTransport()
{
    close();
}

void RPCTransport::open()
{
    if (endpoint)
        return;
    endpoint.emplace(server.getName());
    try {
        epoll.reset(epoll_create1(EPOLL_CLOEXEC));
        wakeUp.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        reserve.reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        addTo(epoll, wakeUp.get(), EPOLLIN);
        addTo(epoll, endpoint->getSocket(), EPOLLIN);
        stopping = false;
        ActiveObject::init();
    } catch (...) {
        endpoint.reset();
        throw;
    }
}

void RPCTransport::close()
{
    if (!endpoint)
        return;
    stopping = true;
    // The event is never taken: it keeps the thread awake until it has seen that it is to stop.
    eventfd_write(wakeUp.get(), 1);
    ActiveObject::exit();
    {
        std::lock_guard guard(connectionsMutex);
        subscribers = 0;
        connections.clear();
    }
    endpoint.reset();
    epoll.reset();
    wakeUp.reset();
    reserve.reset();
}

int RPCTransport::thread()
{
    ownThread = pthread_self();
    std::array<epoll_event, 16> events{};
    while (!stopping) {
        const int count = epoll_wait(epoll.get(), events.data(), events.size(), largeTexts ? KEPT_MS : -1);
        for (int i = 0; i < count && !stopping; ++i) {
            const epoll_event& event = events[static_cast<std::size_t>(i)];
            step(event.data.fd, event.events);
        }
        if (largeTexts && std::chrono::steady_clock::now() >= lastLarge + std::chrono::milliseconds(KEPT_MS))
            giveMemoryBack();
    }
    largeTexts.reset();
    ownThread = pthread_t{};
    return 0;
}

void RPCTransport::noteLength(std::size_t length)
{
    if (length <= buffer.size())
        return;
    lastLarge = std::chrono::steady_clock::now();
    if (!largeTexts)
        largeTexts.emplace();
}

void RPCTransport::giveMemoryBack()
{
    largeTexts.reset();
    for (const auto& [socket, connection] : connections)
        connection->input.shrink_to_fit();
    malloc_trim(0);
    giveEndOfHeapBack();
}

void RPCTransport::step(int descriptor, std::uint32_t events)
{
    try {
        if (descriptor == endpoint->getSocket())
            accept();
        else if (const auto found = connections.find(descriptor); found != connections.end())
            serve(*found->second, events);
    } catch (const std::exception& error) {
        abandon(descriptor, error.what());
    } catch (...) {
        abandon(descriptor, "unknown");
    }
}

void RPCTransport::abandon(int descriptor, const char* reason)
{
    const auto found = connections.find(descriptor);
    if (found == connections.end()) {
        corvaneDebugPrint(DEBUG_WARNING, "RPCServer", "RPCTransport", __LINE__, "%s: a client is turned away: %s\n",
                          server.getName().c_str(), reason);
        return;
    }
    log(__LINE__, descriptor, "is disconnected", reason);
    drop(*found->second);
}

void RPCTransport::setSubscriptionCheck(std::function<std::string()> check)
{
    subscriptionCheck = std::move(check);
}

void RPCTransport::waitForHandler()
{
    if (ownThread.load() != pthread_self())
        std::lock_guard guard(handlerMutex);
}

void RPCTransport::endCalls()
{
    std::lock_guard guard(handlerMutex);
    takesCalls = false;
}

void RPCTransport::notify(std::string_view name, std::string_view payload)
{
    // A thread that has a fault under the lock never gives it back.
    if (subscribers.load() == 0 || DeferringMutex::isInSection())
        return;
    const iovec pieces[] = {piece(R"({"jsonrpc":"2.0","method":")"), piece(name), piece(R"(","params":)"),
                            piece(payload), piece("}\n")};
    // A single piece is sent in half the time of five. What is too long for the stack is sent as it is.
    std::array<char, 1024> line;
    const std::size_t size = measure(pieces);
    if (size > line.size())
        return sendNotification(name, pieces);
    join(pieces, line.data());
    const iovec whole = piece({line.data(), size});
    sendNotification(name, {&whole, 1});
}

void RPCTransport::sendNotification(std::string_view name, std::span<const iovec> pieces)
{
    std::lock_guard guard(connectionsMutex);
    for (const auto& [socket, connection] : connections) {
        if (!connection->isSubscribedTo(name))
            continue;
        connection->send(RPCConnection::Kind::NOTIFICATION, pieces);
        watch(*connection);
    }
}

void RPCTransport::accept()
{
    FileDescriptor socket(accept4(endpoint->getSocket(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket.isOpen()) {
        if (errno == EMFILE || errno == ENFILE)
            acceptWithReserve();
        return;
    }
    if (!RPCAddress::mayConnect(socket.get(), endpoint->getGroup()))
        return turnAway(std::move(socket), "permission denied");
    if (connections.size() >= server.connectionLimit || hasItsShare(RPCCaller(socket.get()).getUser()))
        return turnAway(std::move(socket), "too many connections");
    const int descriptor = socket.get();
    auto connection = std::make_unique<RPCConnection>(std::move(socket));
    std::lock_guard guard(connectionsMutex);
    addTo(epoll, descriptor, connection->watched = EPOLLIN);
    connections.emplace(descriptor, std::move(connection));
}

bool RPCTransport::hasItsShare(uid_t user) const
{
    if (user == 0 || user == geteuid())
        return false;
    const auto own = std::count_if(connections.begin(), connections.end(),
                                   [user](const auto& entry) { return entry.second->caller.getUser() == user; });
    return static_cast<unsigned int>(own) >= (server.connectionLimit + 1) / 2;
}

void RPCTransport::acceptWithReserve()
{
    // Without this the waiting client would keep the thread awake for as long as descriptors are short.
    reserve.reset();
    FileDescriptor socket(accept4(endpoint->getSocket(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.isOpen())
        turnAway(std::move(socket), "the server has no file descriptor left");
    reserve.reset(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

void RPCTransport::turnAway(FileDescriptor socket, const char* reason)
{
    const std::string text = RPCMessage::errorReply("null", RPCErrorObject::CALL_FAILED, reason) + '\n';
    const iovec whole = piece(text);
    RPCConnection connection(std::move(socket));
    connection.send(RPCConnection::Kind::ANSWER, {&whole, 1});
    log(__LINE__, connection.getSocket(), "is turned away", reason);
}

void RPCTransport::serve(RPCConnection& connection, std::uint32_t events)
{
    if (connection.hasOutput())
        resume(connection);
    else if (!connection.closing && (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0)
        read(connection);
    const RPCConnection::Loss loss = connection.getLoss();
    const bool isLost = loss != RPCConnection::Loss::NONE || (events & EPOLLERR) != 0;
    if (!isLost && (!connection.closing || connection.hasOutput()))
        return;
    if (loss == RPCConnection::Loss::BEHIND)
        log(__LINE__, connection.getSocket(), "is disconnected", "it does not read what it is sent");
    else if (loss == RPCConnection::Loss::NO_MEMORY)
        log(__LINE__, connection.getSocket(), "is disconnected", "no memory is left for what it is sent");
    drop(connection);
}

void RPCTransport::resume(RPCConnection& connection)
{
    {
        std::lock_guard guard(connectionsMutex);
        connection.flush();
        watch(connection);
    }
    // What had to wait is here already: no event will tell of it.
    if (!connection.hasOutput() && !connection.closing)
        handleInput(connection, std::exchange(connection.input, {}));
}

void RPCTransport::read(RPCConnection& connection)
{
    const ssize_t size = recv(connection.getSocket(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size > 0)
        return handleInput(connection, {buffer.data(), static_cast<std::size_t>(size)});
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (!connection.input.empty())
        log(__LINE__, connection.getSocket(), "has left", "its last message has no end and is dropped");
    finish(connection);
}

void RPCTransport::handleInput(RPCConnection& connection, std::string_view data)
{
    auto end = data.find('\n');
    for (; end != data.npos && !connection.hasOutput() && !connection.closing && !stopping; end = data.find('\n')) {
        const std::string_view line = data.substr(0, end);
        data.remove_prefix(end + 1);
        if (connection.input.empty()) {
            handleMessage(connection, line);
        } else {
            noteLength(connection.input.append(line).size());
            handleMessage(connection, connection.input);
            connection.input.clear();
        }
    }
    if (connection.closing || data.empty())
        return;
    noteLength(connection.input.append(data).size());
    if (end == data.npos && connection.input.size() > RPCMessage::SIZE_LIMIT)
        refuse(connection, RPCErrorObject::INVALID_REQUEST, "the message is longer than 1048576 bytes");
}

void RPCTransport::handleMessage(RPCConnection& connection, std::string_view message)
{
    if (message.size() > RPCMessage::SIZE_LIMIT)
        return refuse(connection, RPCErrorObject::INVALID_REQUEST, "the message is longer than 1048576 bytes");
    try {
        RPCMessage::Answer answer = answerMessage(connection, message);
        if (answer.isCutShort && !std::exchange(connection.toldBatch, true))
            log(__LINE__, connection.getSocket(), "is not answered in full", "the answers to its batch are too long");
        if (!answer.text.empty())
            send(connection, std::move(answer.text));
    } catch (const NestingError& error) {
        refuse(connection, RPCErrorObject::PARSE_ERROR, error.what());
    } catch (const std::exception& error) {
        send(connection, RPCMessage::errorReply("null", RPCErrorObject::CALL_FAILED, error.what()));
        log(__LINE__, connection.getSocket(), "is answered with an error", error.what());
    }
}

RPCMessage::Answer RPCTransport::answerMessage(RPCConnection& connection, std::string_view message)
{
    std::lock_guard guard(handlerMutex);
    return RPCMessage::answer(message, [&](const RPCMessage::Call& call) { return handleCall(connection, call); });
}

std::string RPCTransport::handleCall(RPCConnection& connection, const RPCMessage::Call& call)
{
    if (call.interface.empty() && (call.method == "rpc.subscribe" || call.method == "rpc.unsubscribe"))
        return handleSubscription(connection, call);
    if (!takesCalls)
        return call.expectsReply
                   ? RPCMessage::errorReply(call.id, RPCErrorObject::CALL_FAILED, "the server takes no calls any more")
                   : std::string();
    const RPCCallerScope scope(connection.caller);
    return server.handleCall(call);
}

std::string RPCTransport::handleSubscription(RPCConnection& connection, const RPCMessage::Call& call)
{
    if (subscriptionCheck && call.method == "rpc.subscribe") {
        const RPCCallerScope scope(connection.caller);
        if (const std::string problem = subscriptionCheck(); !problem.empty())
            return RPCMessage::errorReply(call.id, RPCErrorObject::CALL_FAILED, problem);
    }
    std::vector<std::string> patterns;
    try {
        patterns = RPCMessage::notificationPatterns(call.parameters);
    } catch (const SerialError& error) {
        return RPCMessage::errorReply(call.id, RPCErrorObject::INVALID_PARAMETERS, error.what());
    }
    bool done = true;
    {
        std::lock_guard guard(connectionsMutex);
        if (call.method == "rpc.unsubscribe")
            connection.unsubscribe(patterns);
        else
            done = connection.subscribe(std::move(patterns));
        countSubscribers();
    }
    if (done)
        return RPCMessage::resultReply(call.id, "null");
    if (!std::exchange(connection.toldPatterns, true))
        log(__LINE__, connection.getSocket(), "is refused", "too many subscriptions");
    return RPCMessage::errorReply(call.id, RPCErrorObject::CALL_FAILED, "too many subscriptions");
}

void RPCTransport::refuse(RPCConnection& connection, int code, const std::string& reason)
{
    send(connection, RPCMessage::errorReply("null", code, reason));
    log(__LINE__, connection.getSocket(), "is disconnected", reason.c_str());
    finish(connection);
}

void RPCTransport::finish(RPCConnection& connection)
{
    std::lock_guard guard(connectionsMutex);
    connection.closing = true;
    watch(connection);
}

void RPCTransport::send(RPCConnection& connection, std::string text)
{
    // A message is a line. In JSON a line feed can only be white space, so a handler's text keeps its meaning.
    for (auto at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1))
        text[at] = ' ';
    text += '\n';
    const iovec whole = piece(text);
    std::lock_guard guard(connectionsMutex);
    connection.send(RPCConnection::Kind::ANSWER, {&whole, 1});
    watch(connection);
}

void RPCTransport::watch(RPCConnection& connection)
{
    const std::uint32_t input = connection.closing ? 0U : EPOLLIN;
    const std::uint32_t wanted = connection.hasOutput() ? EPOLLOUT : input;
    if (connection.watched == wanted)
        return;
    connection.watched = wanted;
    epoll_event event{.events = wanted, .data = {.fd = connection.getSocket()}};
    epoll_ctl(epoll.get(), EPOLL_CTL_MOD, connection.getSocket(), &event);
}

void RPCTransport::drop(RPCConnection& connection)
{
    std::lock_guard guard(connectionsMutex);
    connections.erase(connection.getSocket());
    countSubscribers();
}

void RPCTransport::countSubscribers()
{
    subscribers = static_cast<unsigned int>(std::count_if(
        connections.begin(), connections.end(), [](const auto& entry) { return entry.second->hasSubscriptions(); }));
}

void RPCTransport::log(int line, int socket, const char* event, const char* reason) const
{
    corvaneDebugPrint(DEBUG_WARNING, "RPCServer", "RPCTransport", line, "%s: client %d %s: %s\n",
                      server.getName().c_str(), processOf(socket), event, reason);
}

} // namespace Corvane
