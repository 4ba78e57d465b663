#pragma once

#include "Commands.h"

#include <condition_variable>
#include <corvane/common/RPCClient.h>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Corvanectl
{

/// The name of the process manager's server.
extern const char* const MANAGER;

/// @return whether a process manager runs
bool hasManager();

/// The process manager, which accepts a request at once and announces later what came of it.
class Manager
{
public:
    explicit Manager(const Options& options);

    /// @return the result as JSON text. @throws RPCError
    std::string call(const std::string& method, const std::string& parameters = "{}");

    /// Begins to keep what is announced, so that nothing is missed. To be called before the request.
    void listen();
    /// Waits for what came of a request.
    /// @param key      of the member that must hold `id`
    /// @param success  name of the notification that the request was carried out, without its interface
    /// @param failure  name of the other one; its member "reason" says why
    /// @return the payload. @throws std::runtime_error  it failed. @throws RPCError  nothing came in time
    /// @param failureKey  the same for the notification of a failure
    std::string await(const std::string& key, const std::string& id, const std::string& success,
                      const std::string& failure, std::chrono::milliseconds patience,
                      const std::string& failureKey = "uid");

private:
    struct Notice {
        std::string name;
        std::string payload;
    };

    bool takeNotice(Notice& notice, std::chrono::steady_clock::time_point deadline);

    const std::chrono::milliseconds timeout;
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<Notice> notices;
    /// Last, so that it goes first: its thread uses the rest.
    Corvane::RPCClient client;
};

} // namespace Corvanectl
