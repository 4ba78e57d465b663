#pragma once

#include "Commands.h"

#include <corvane/common/RPCClient.h>
#include <string>

namespace Corvanectl
{

/// One control server, called with the options of the command line.
class Server
{
public:
    /// @param word  what the application is called, see Names.h
    Server(const std::string& word, const Options& options);

    /// @return the result as JSON text. @throws RPCError
    std::string call(const std::string& method, const std::string& parameters = "{}");
    const std::string& getName() const { return client.getServerName(); }

private:
    Corvane::RPCClient client;
    const std::chrono::milliseconds timeout;
};

} // namespace Corvanectl
