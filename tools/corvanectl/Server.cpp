#include "Server.h"

#include "Names.h"

namespace Corvanectl
{

Server::Server(const std::string& word, const Options& options)
    : client(findServerName(word, options)), timeout(options.getTimeout())
{
}

std::string Server::call(const std::string& method, const std::string& parameters)
{
    return client.call(method, parameters, timeout);
}

} // namespace Corvanectl
