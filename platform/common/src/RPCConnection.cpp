#include "RPCConnection.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <numeric>
#include <sys/socket.h>

namespace Corvane
{

namespace
{

/// So many bytes that are gone may stand before those that wait, before these are moved to the front.
constexpr std::size_t COMPACTION_SIZE = 64 * 1024;

/// @return how many bytes the socket took, -1 when the connection is lost
ssize_t trySend(int socket, std::span<const iovec> pieces)
{
    msghdr message{};
    message.msg_iov = const_cast<iovec*>(pieces.data());
    message.msg_iovlen = pieces.size();
    ssize_t taken = -1;
    do {
        // Most messages are one piece, and the plain call is the cheaper one.
        taken = pieces.size() == 1
                    ? ::send(socket, pieces.front().iov_base, pieces.front().iov_len, MSG_DONTWAIT | MSG_NOSIGNAL)
                    : sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (taken < 0 && errno == EINTR);
    if (taken < 0 && errno == EAGAIN)
        return 0;
    return taken;
}

bool matches(std::string_view pattern, std::string_view notification)
{
    if (pattern == "*")
        return true;
    if (pattern.ends_with("::*"))
        return notification.starts_with(pattern.substr(0, pattern.size() - 1));
    return pattern == notification;
}

} // namespace

std::size_t measure(std::span<const iovec> pieces)
{
    return std::accumulate(pieces.begin(), pieces.end(), std::size_t{0},
                           [](std::size_t sum, const iovec& piece) { return sum + piece.iov_len; });
}

void RPCConnection::send(Kind kind, std::span<const iovec> pieces) noexcept
{
    if (loss != Loss::NONE)
        return;
    const ssize_t taken = waits ? 0 : trySend(socket.get(), pieces);
    if (taken < 0)
        return lose(Loss::GONE);
    try {
        keep(kind, pieces, static_cast<std::size_t>(taken));
    } catch (...) {
        // Part of the message may be gone, so nothing else can be said on this connection.
        lose(Loss::NO_MEMORY);
    }
}

void RPCConnection::keep(Kind kind, std::span<const iovec> pieces, std::size_t taken)
{
    const std::size_t size = measure(pieces);
    // Of a message that the socket took whole nothing is left: then no memory is touched here.
    if (taken == size)
        return;
    if (kind == Kind::NOTIFICATION && countWaitingNotifications() + size - taken > NOTIFICATION_LIMIT)
        return lose(Loss::BEHIND);
    const std::size_t begin = output.size();
    output.reserve(begin + size - taken);
    for (const iovec& piece : pieces) {
        const std::size_t skipped = std::min(taken, piece.iov_len);
        taken -= skipped;
        output.append(static_cast<const char*>(piece.iov_base) + skipped, piece.iov_len - skipped);
    }
    if (kind == Kind::ANSWER) {
        answerBegin = begin;
        answerEnd = output.size();
    }
    waits = true;
}

std::size_t RPCConnection::countWaitingNotifications() const
{
    const std::size_t answerLeft = answerEnd - std::clamp(sent, answerBegin, answerEnd);
    return output.size() - sent - answerLeft;
}

void RPCConnection::flush() noexcept
{
    const iovec rest{.iov_base = output.data() + sent, .iov_len = output.size() - sent};
    const ssize_t taken = trySend(socket.get(), {&rest, 1});
    if (taken < 0)
        return lose(Loss::GONE);
    sent += static_cast<std::size_t>(taken);
    // Not before half of it is gone: however much waits, no more bytes are moved than sent.
    if (sent == output.size() || (sent >= COMPACTION_SIZE && sent >= output.size() / 2))
        compact();
}

void RPCConnection::compact()
{
    if (sent == output.size()) {
        // Gives the memory back, which an assignment would keep: a client that reads in time needs none.
        std::string().swap(output);
        waits = false;
    } else {
        output.erase(0, sent);
    }
    answerBegin -= std::min(sent, answerBegin);
    answerEnd -= std::min(sent, answerEnd);
    sent = 0;
}

void RPCConnection::lose(Loss reason)
{
    // The first reason is the right one: whatever is sent after it fails only because of it.
    if (loss == Loss::NONE)
        loss = reason;
    shutdown(socket.get(), SHUT_RDWR);
}

bool RPCConnection::subscribe(std::vector<std::string> patterns)
{
    if (patterns.size() > SUBSCRIPTION_LIMIT)
        return false;
    std::erase_if(patterns, [this](const std::string& pattern) {
        return std::find(subscriptions.begin(), subscriptions.end(), pattern) != subscriptions.end();
    });
    if (subscriptions.size() + patterns.size() > SUBSCRIPTION_LIMIT)
        return false;
    subscriptions.insert(subscriptions.end(), std::make_move_iterator(patterns.begin()),
                         std::make_move_iterator(patterns.end()));
    return true;
}

void RPCConnection::unsubscribe(const std::vector<std::string>& patterns)
{
    std::erase_if(subscriptions, [&patterns](const std::string& subscribed) {
        return std::binary_search(patterns.begin(), patterns.end(), subscribed);
    });
}

bool RPCConnection::isSubscribedTo(std::string_view notification) const
{
    return std::any_of(subscriptions.begin(), subscriptions.end(),
                       [notification](const std::string& pattern) { return matches(pattern, notification); });
}

} // namespace Corvane
