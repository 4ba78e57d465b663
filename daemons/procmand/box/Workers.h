#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Procmand
{

/// Threads for what has to wait: the starting of programs, and calls that are made one after the other.
///
/// All of them are made at construction, so that no job waits for a thread that the system refuses. Thread-safe.
/// Destruction finishes them.
class Workers
{
public:
    using Job = std::function<void()>;

    /// @param count  of threads; where the system has fewer for them, these do the work
    /// @throws std::system_error  it has none
    explicit Workers(unsigned int count);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Runs the job as soon as a thread is free. What it throws is logged.
    void run(Job job);
    /// Runs the jobs that are left, and ends the threads. Later jobs are not run. Not for a job to call.
    void finish();

private:
    void work();

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Job> jobs;
    std::vector<std::thread> threads;
    bool ending = false;
};

} // namespace Procmand
