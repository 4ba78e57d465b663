#include "Manager.h"

#include "Output.h"

#include <algorithm>
#include <corvane/common/RPCError.h>
#include <stdexcept>

namespace Corvanectl
{
namespace
{

using Corvane::RPCError;

} // namespace

const char* const MANAGER = "ORU";

bool hasManager()
{
    const std::vector<std::string> servers = Corvane::RPCClient::listServers();
    return std::find(servers.begin(), servers.end(), MANAGER) != servers.end();
}

Manager::Manager(const Options& options) : timeout(options.getTimeout()), client(MANAGER) {}

std::string Manager::call(const std::string& method, const std::string& parameters)
{
    return client.call(method, parameters, timeout);
}

void Manager::listen()
{
    client.subscribe(
        {"IApplicationManager::*", "IWindowCompositing::*"},
        [this](const std::string& name, const std::string& payload) {
            std::lock_guard guard(mutex);
            notices.push_back({name, payload});
            arrived.notify_all();
        },
        {}, timeout);
}

std::string Manager::await(const std::string& key, const std::string& id, const std::string& success,
                           const std::string& failure, std::chrono::milliseconds patience,
                           const std::string& failureKey)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (Notice notice; takeNotice(notice, deadline);) {
        const JsonText payload(notice.payload);
        if (notice.name.ends_with("::" + success) && textOf(payload.root, key.c_str()) == id)
            return notice.payload;
        if (notice.name.ends_with("::" + failure) && textOf(payload.root, failureKey.c_str()) == id)
            throw std::runtime_error(textOf(payload.root, "reason"));
    }
    throw RPCError(RPCError::Reason::TIMED_OUT, 5, "the request was accepted, but is not carried out yet");
}

bool Manager::takeNotice(Notice& notice, std::chrono::steady_clock::time_point deadline)
{
    std::unique_lock lock(mutex);
    if (!arrived.wait_until(lock, deadline, [this] { return !notices.empty(); }))
        return false;
    notice = std::move(notices.front());
    notices.pop_front();
    return true;
}

} // namespace Corvanectl
