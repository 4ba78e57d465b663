#pragma once

#include <corvane/common/FileDescriptor.h>
#include <functional>
#include <string>
#include <thread>

namespace Corvane::Test
{

/// A server that says whatever a test wants.
///
///     HostileServer server("APPevil", [](const std::string& id, const std::string&) { return "{\"id\":" + id; });
class HostileServer
{
public:
    /// @param answer  gets the id and the method of a call; what it returns is sent as it is, with a line feed behind
    /// it
    using Answer = std::function<std::string(const std::string& id, const std::string& method)>;

    HostileServer(const std::string& name, Answer answer);
    ~HostileServer();
    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

private:
    void serve();
    void serveClient(int client);

    const Answer answer;
    const std::string path;
    FileDescriptor listener;
    FileDescriptor ending;
    std::thread thread; ///< takes clients; each of them has a further one
};

} // namespace Corvane::Test
