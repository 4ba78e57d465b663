#include "Server.h"

#include <algorithm>

namespace Corvanectl
{
namespace
{

const std::string APPLICATION_PREFIX = "APP";

} // namespace

std::string findServerName(const std::string& uid)
{
    if (uid.empty())
        throw UsageError("the uid is empty");
    const std::vector<std::string> servers = Corvane::RPCClient::listServers();
    const auto lives = [&servers](const std::string& name) {
        return std::find(servers.begin(), servers.end(), name) != servers.end();
    };
    const std::string ofApplication = APPLICATION_PREFIX + uid;
    return lives(uid) && !lives(ofApplication) ? uid : ofApplication;
}

std::string findUid(const std::string& serverName)
{
    const bool isApplication = serverName.starts_with(APPLICATION_PREFIX) && serverName != APPLICATION_PREFIX;
    return isApplication ? serverName.substr(APPLICATION_PREFIX.size()) : serverName;
}

Server::Server(const std::string& uid, const Options& options)
    : client(findServerName(uid)), timeout(options.getTimeout())
{
}

std::string Server::call(const std::string& method, const std::string& parameters)
{
    return client.call(method, parameters, timeout);
}

} // namespace Corvanectl
