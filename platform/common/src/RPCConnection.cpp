#include "RPCConnection.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace Corvane
{

namespace
{

/// So many bytes that are gone may stand before those that wait, before these are moved to the front.
constexpr std::size_t COMPACTION_SIZE = 64 * 1024;

/// @return how many bytes the socket took, -1 when the connection is lost
ssize_t trySend(int socket, const iovec* pieces, int count)
{
    msghdr message{};
    message.msg_iov = const_cast<iovec*>(pieces);
    message.msg_iovlen = static_cast<std::size_t>(count);
    ssize_t taken = -1;
    do {
        // An answer is one piece, and the plain call is the cheaper one.
        taken = count == 1 ? ::send(socket, pieces->iov_base, pieces->iov_len, MSG_DONTWAIT | MSG_NOSIGNAL)
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

void RPCConnection::send(const iovec* pieces, int count)
{
    if (loss != Loss::NONE)
        return;
    const ssize_t taken = hasOutput() ? 0 : trySend(socket.get(), pieces, count);
    if (taken < 0)
        lose(Loss::GONE);
    else
        keep(pieces, count, static_cast<std::size_t>(taken));
}

void RPCConnection::keep(const iovec* pieces, int count, std::size_t taken)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t skipped = std::min(taken, pieces[i].iov_len);
        taken -= skipped;
        // Of a message that the socket took whole nothing is left: then no memory is touched here.
        if (skipped < pieces[i].iov_len)
            output.append(static_cast<const char*>(pieces[i].iov_base) + skipped, pieces[i].iov_len - skipped);
    }
    if (output.size() - sent > OUTPUT_LIMIT)
        lose(Loss::BEHIND);
}

void RPCConnection::flush()
{
    const iovec rest{.iov_base = output.data() + sent, .iov_len = output.size() - sent};
    const ssize_t taken = trySend(socket.get(), &rest, 1);
    if (taken < 0)
        return lose(Loss::GONE);
    sent += static_cast<std::size_t>(taken);
    if (!hasOutput()) {
        output = std::string(); // gives the memory back: a client that reads in time needs none
        sent = 0;
    } else if (sent >= COMPACTION_SIZE) {
        output.erase(0, sent);
        sent = 0;
    }
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
    if (subscriptions.size() + patterns.size() > SUBSCRIPTION_LIMIT)
        return false;
    for (std::string& pattern : patterns) {
        if (std::find(subscriptions.begin(), subscriptions.end(), pattern) == subscriptions.end())
            subscriptions.push_back(std::move(pattern));
    }
    return true;
}

void RPCConnection::unsubscribe(const std::vector<std::string>& patterns)
{
    for (const std::string& pattern : patterns)
        std::erase(subscriptions, pattern);
}

bool RPCConnection::isSubscribedTo(std::string_view notification) const
{
    return std::any_of(subscriptions.begin(), subscriptions.end(),
                       [notification](const std::string& pattern) { return matches(pattern, notification); });
}

} // namespace Corvane
