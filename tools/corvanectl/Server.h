#pragma once

#include "Commands.h"

#include <corvane/common/RPCClient.h>
#include <string>

namespace Corvanectl
{

/// @param uid  the uid of an application, or the whole name of a server; a uid goes first where both exist
/// @return the name of the server that is meant
/// @throws UsageError  the uid is empty
std::string findServerName(const std::string& uid);

/// @return the uid of the application that has this control server, or the name of a server that has none
std::string findUid(const std::string& serverName);

/// One control server, called with the options of the command line.
class Server
{
public:
    Server(const std::string& uid, const Options& options);

    /// @return the result as JSON text. @throws RPCError
    std::string call(const std::string& method, const std::string& parameters = "{}");
    const std::string& getName() const { return client.getServerName(); }

private:
    Corvane::RPCClient client;
    const std::chrono::milliseconds timeout;
};

} // namespace Corvanectl
