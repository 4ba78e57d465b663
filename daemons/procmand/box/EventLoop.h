#pragma once

#include <atomic>
#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace Procmand
{

/// Runs what happens in the box, one thing after the other, on the thread that calls `run()`.
///
/// Every task runs under the lock given at construction, which also guards the state of the box; so a task must never
/// wait. All operations but `run()` are thread-safe. With the lock held, `cancel` and `unwatch` are final: what they
/// took away does not run any more.
class EventLoop
{
public:
    using Task = std::function<void()>;
    using Timer = std::uint64_t; ///< 0 is none; a number never comes back, however long the box runs

    explicit EventLoop(std::mutex& lock);

    /// Runs the task soon, in the order of the calls.
    void post(Task task);
    /// Runs the task once, after the delay, and after all that was posted in the meantime.
    Timer schedule(std::chrono::milliseconds delay, Task task);
    /// Takes the timer back, if it has not run yet, and sets it to none.
    void cancel(Timer& timer);
    /// Runs the task whenever the descriptor can be read, until it is unwatched. The descriptor is not owned.
    void watch(int descriptor, Task onReadable);
    void unwatch(int descriptor);

    /// Runs tasks until `stop()`; what was posted before that runs as well.
    void run();
    void stop();
    /// Drops what was posted since, with what it owns.
    void discard();

private:
    using Clock = std::chrono::steady_clock;
    struct TimedTask {
        Clock::time_point due;
        Task task;
    };

    int findPatience();
    /// The one that is due next, of those that are due at once the oldest.
    std::map<Timer, TimedTask>::iterator findNextTimer();
    void runPosted();
    void runDueTimers(Clock::time_point now);
    std::optional<Task> takeDueTimer(Clock::time_point now);
    std::shared_ptr<Task> findWatch(int descriptor);
    void wakeUp();

    std::mutex& lock;
    const Corvane::FileDescriptor epoll;
    const Corvane::FileDescriptor wakeUpEvent;
    std::atomic<bool> stopping{false};
    std::mutex mutex; ///< guards what follows; nothing is called under it
    std::deque<Task> posted;
    std::map<Timer, TimedTask> timers;
    std::map<int, std::shared_ptr<Task>> watches;
    Timer lastTimer = 0;
};

} // namespace Procmand
