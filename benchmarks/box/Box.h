#pragma once

#include <chrono>
#include <condition_variable>
#include <corvane/common/RPCClient.h>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Corvane::Benchmark
{

using Clock = std::chrono::steady_clock;

/// A process manager in folders of its own, and a connection that hears everything in the box.
class Box
{
public:
    Box();
    /// Kills the process manager and everything that was started.
    ~Box();
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    /// Starts box-window through the process manager. @return its uid
    std::string launch();
    /// Starts box-window by fork and exec.
    void startBare(const std::string& uid);
    /// Waits for the first keep-alive of an application. @return when it came
    Clock::time_point awaitKeepAlive(const std::string& uid);
    /// Kills an application and waits until the process manager has taken note.
    void end(const std::string& uid);

    pid_t getManager() const { return manager; }

private:
    void hear(const std::string& name, const std::string& payload);
    void await(const std::string& what, const std::string& uid, std::map<std::string, Clock::time_point>& seen);

    std::string folder;
    pid_t manager = 0;
    std::mutex mutex; ///< guards what follows
    std::condition_variable heard;
    std::map<std::string, pid_t> processes; ///< by uid; those that have not been ended
    std::map<std::string, Clock::time_point> keepAlives;
    std::map<std::string, Clock::time_point> ends;
    /// Last, so that it goes first: its thread uses the rest.
    std::unique_ptr<RPCClient> client;
};

} // namespace Corvane::Benchmark
