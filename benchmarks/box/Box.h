#pragma once

#include <Process.h>
#include <Rounds.h>
#include <condition_variable>
#include <corvane/common/RPCClient.h>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>

namespace Corvane::Benchmark
{

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

    /// @return how many keep-alives of all applications came so far
    long countKeepAlives();
    /// Calls a method of the process manager. @return the result
    std::string call(const std::string& method, const std::string& parameters = "{}");
    /// @return microseconds that a call of the process manager takes, the median of some
    double timeCall(const std::string& method, const std::string& parameters = "{}");

    pid_t getManager() const { return manager->getId(); }

private:
    void hear(const std::string& name, const std::string& payload);
    void await(const std::string& what, const std::string& uid, std::map<std::string, Clock::time_point>& seen);

    RuntimeFolder folder;
    std::optional<Process> manager;
    std::mutex mutex; ///< guards what follows
    std::condition_variable heard;
    std::map<std::string, pid_t> processes;              ///< by uid; those that have not been ended
    std::map<std::string, Clock::time_point> keepAlives; ///< the first ones
    long allKeepAlives = 0;
    std::map<std::string, Clock::time_point> ends;
    /// Last, so that it goes first: its thread uses the rest.
    std::unique_ptr<RPCClient> client;
};

} // namespace Corvane::Benchmark
