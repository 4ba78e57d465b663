#include "RPCSubscription.h"

#include "RPCAddress.h"

#include <array>
#include <corvane/common/RPCError.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>

namespace Corvane
{

namespace
{

/// How long a server that has just appeared may take to answer, before the next attempt.
constexpr std::chrono::seconds RECONNECT_DEADLINE{5};
/// How soon it is tried again where no file will tell: the server is there but did not take the subscription, or the
/// runtime folder cannot be watched, for it is gone as well.
constexpr int RETRY_MS = 1000;

} // namespace

RPCClient::Subscription::Subscription(const std::string& serverName, const std::vector<std::string>& patterns,
                                      NotificationHandler onNotification, ConnectionHandler onConnection,
                                      RPCLink::Clock::time_point deadline)
    : ActiveObject("RPCSubscription"),
      serverName(serverName),
      parameters(subscriptionParameters(patterns)),
      onNotification(std::move(onNotification)),
      onConnection(std::move(onConnection)),
      wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!wakeUp.isOpen())
        throw RPCAddress::systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot subscribe");
    connect(deadline);
    ActiveObject::init();
}

RPCClient::Subscription::~Subscription()
{
    stopping = true;
    eventfd_write(wakeUp.get(), 1); // never taken: it ends every wait from now on
    ActiveObject::exit();
}

void RPCClient::Subscription::connect(RPCLink::Clock::time_point deadline)
{
    link.emplace(serverName, deadline);
    link->send(callMessage("1", "rpc.subscribe", parameters), deadline);
    while (const auto message = link->receive(deadline, wakeUp.get())) {
        RPCAnswer answer(*message);
        if (!answer.isNotification) {
            answer.getResult();
            return;
        }
        early.push_back(std::move(answer));
    }
}

int RPCClient::Subscription::thread()
{
    do {
        tellConnected(true);
        deliverUntilLost();
        if (stopping)
            break;
        link.reset();
        tellConnected(false);
    } while (reconnect());
    return 0;
}

void RPCClient::Subscription::deliverUntilLost()
try {
    for (; !early.empty() && !stopping; early.pop_front())
        onNotification(early.front().method, early.front().parameters);
    while (const auto message = link->receive(RPCLink::Clock::time_point::max(), wakeUp.get())) {
        const RPCAnswer answer(*message);
        if (answer.isNotification)
            onNotification(answer.method, answer.parameters);
    }
} catch (const RPCError&) {
    // The connection is lost, or speaks something else: both mean to begin anew.
}

bool RPCClient::Subscription::reconnect()
{
    while (!stopping) {
        // Watch first, then try: a server that appears in between is seen by one of the two.
        const FileDescriptor watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
        const bool watching = inotify_add_watch(watch.get(), RPCAddress::runtimeDirectory().c_str(),
                                                IN_CREATE | IN_ATTRIB | IN_MOVED_TO) >= 0;
        try {
            connect(RPCLink::Clock::now() + RECONNECT_DEADLINE);
            return !stopping;
        } catch (const RPCError& error) {
            early.clear();
            const bool willBeTold = watching && error.getReason() == RPCError::Reason::NO_SERVER;
            waitForServer(watch.get(), willBeTold ? -1 : RETRY_MS);
        }
    }
    return false;
}

void RPCClient::Subscription::waitForServer(int folderWatch, int timeoutMs)
{
    std::array<pollfd, 2> waits{pollfd{.fd = wakeUp.get(), .events = POLLIN, .revents = 0},
                                pollfd{.fd = folderWatch, .events = POLLIN, .revents = 0}};
    poll(waits.data(), waits.size(), timeoutMs);
}

void RPCClient::Subscription::tellConnected(bool connected)
{
    if (onConnection)
        onConnection(connected);
}

} // namespace Corvane
