#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Procmand
{

/// Threads for what has to wait: remote calls and the starting of programs.
///
/// A job that finds every thread busy gets a new one, up to the limit; then it waits for its turn. Thread-safe.
/// Destruction finishes them.
class Workers
{
public:
    using Job = std::function<void()>;

    explicit Workers(unsigned int limit);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// @param job  must not throw
    void run(Job job);
    /// Runs the jobs that are left, and ends the threads. Later jobs are not run. Not for a job to call.
    void finish();

private:
    void work();

    const unsigned int limit;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Job> jobs;
    std::vector<std::thread> threads;
    unsigned int idle = 0;
    bool ending = false;
};

} // namespace Procmand
