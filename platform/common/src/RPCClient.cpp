#include <corvane/common/RPCClient.h>

#include "RPCAddress.h"
#include "RPCAnswer.h"
#include "RPCLink.h"
#include "RPCSubscription.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <corvane/foundation/ReturnCode.h>
#include <filesystem>
#include <mutex>
#include <optional>

namespace Corvane
{

namespace
{

/// @param isWanted  told what came of connecting: the connection, or none and the error
/// @return the names of the servers whose sockets lie in the runtime folder and answer so, sorted
std::vector<std::string> findServers(bool (*isWanted)(const FileDescriptor& connection, int error))
{
    std::vector<std::string> servers;
    const std::filesystem::path folder = RPCAddress::runtimeDirectory();
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure)) {
        const auto name = RPCAddress::serverName(entry.path().filename().string());
        const std::string path = entry.path().string();
        if (!name || !entry.is_socket(failure) || path.size() >= sizeof(sockaddr_un::sun_path))
            continue;
        const FileDescriptor connection = RPCAddress::connectTo(RPCAddress::socketAddress(path), {});
        if (isWanted(connection, connection.isOpen() ? 0 : errno))
            servers.push_back(*name);
    }
    std::sort(servers.begin(), servers.end());
    return servers;
}

} // namespace

/// The connection that a client's calls go through, one after the other.
class RPCClient::Caller
{
public:
    std::string call(const std::string& serverName, const std::string& method, const std::string& parameters,
                     RPCLink::Clock::time_point deadline);

private:
    /// The turn of one call; waiting for it counts towards the call's deadline.
    class Turn;

    std::string receiveAnswer(const std::string& id, RPCLink::Clock::time_point deadline);

    std::mutex mutex;
    std::condition_variable turnEnded;
    bool busy = false;
    unsigned int lastId = 0;
    std::optional<RPCLink> link;
};

class RPCClient::Caller::Turn
{
public:
    Turn(Caller& caller, RPCLink::Clock::time_point deadline) : caller(caller)
    {
        std::unique_lock lock(caller.mutex);
        if (!caller.turnEnded.wait_until(lock, deadline, [&caller] { return !caller.busy; }))
            throw RPCError(RPCError::Reason::TIMED_OUT, RETURN_TIMED_OUT, "Timed out");
        caller.busy = true;
    }
    ~Turn()
    {
        {
            std::lock_guard guard(caller.mutex);
            caller.busy = false;
        }
        caller.turnEnded.notify_one();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    Caller& caller;
};

std::string RPCClient::Caller::call(const std::string& serverName, const std::string& method,
                                    const std::string& parameters, RPCLink::Clock::time_point deadline)
{
    const Turn turn(*this, deadline);
    if (!link || link->isClosed())
        link.emplace(serverName, deadline);
    try {
        const std::string id = std::to_string(++lastId);
        link->send(callMessage(id, method, parameters), deadline);
        return receiveAnswer(id, deadline);
    } catch (const RPCError& error) {
        // After anything but an answer it is not known what will come next on this connection.
        if (error.getReason() != RPCError::Reason::CALL_FAILED)
            link.reset();
        throw;
    }
}

std::string RPCClient::Caller::receiveAnswer(const std::string& id, RPCLink::Clock::time_point deadline)
{
    for (;;) {
        const RPCAnswer answer(*link->receive(deadline));
        // An answer to nothing in particular says why the server turned this client away.
        if (!answer.isNotification && (answer.id == id || (answer.id == "null" && answer.errorCode)))
            return answer.getResult();
    }
}

RPCClient::RPCClient(std::string serverName) : serverName(std::move(serverName)), caller(std::make_unique<Caller>()) {}

RPCClient::~RPCClient() = default;

const std::string& RPCClient::getServerName() const
{
    return serverName;
}

std::string RPCClient::call(const std::string& method, const std::string& parameters,
                            std::chrono::milliseconds deadline)
{
    return caller->call(serverName, method, parameters, RPCLink::deadlineAfter(deadline));
}

void RPCClient::subscribe(std::vector<std::string> patterns, NotificationHandler onNotification,
                          ConnectionHandler onConnection, std::chrono::milliseconds deadline)
{
    if (subscription)
        throw RPCError(RPCError::Reason::CALL_FAILED, RETURN_INVALID_STATE, "this client has subscribed already");
    subscription = std::make_unique<Subscription>(serverName, patterns, std::move(onNotification),
                                                  std::move(onConnection), RPCLink::deadlineAfter(deadline));
}

std::vector<std::string> RPCClient::listServers()
{
    return findServers([](const FileDescriptor& socket, int error) { return socket.isOpen() || error == EAGAIN; });
}

std::vector<std::string> RPCClient::listDeadServers()
{
    return findServers([](const FileDescriptor&, int error) { return error == ECONNREFUSED; });
}

} // namespace Corvane
