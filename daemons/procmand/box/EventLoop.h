#pragma once

#include <atomic>
#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Procmand
{

/// Runs what happens in the box, one thing after the other, on the thread that calls `run()`.
///
/// Every task runs under the lock given at construction, which also guards the state of the box; so a task must never
/// wait. What a task throws is logged, and the loop goes on. All operations but `run()` are thread-safe. With the lock
/// held, `cancel` and `unwatch` are final: what they took away does not run any more.
class EventLoop
{
public:
    using Task = std::function<void()>;
    using Timer = std::uint64_t; ///< 0 is none; a number never comes back, however long the box runs

    explicit EventLoop(std::mutex& lock);

    /// Runs the task soon, in the order of the calls.
    void post(Task task);
    /// Runs the task once, after the delay, and after all that was posted in the meantime. One that lacks memory is run
    /// again a moment later, from its beginning.
    Timer schedule(std::chrono::milliseconds delay, Task task);
    /// Takes the timer back, if it has not run yet, and sets it to none.
    void cancel(Timer& timer);
    /// Runs the task whenever the descriptor can be read, until it is unwatched. The descriptor is not owned.
    /// @throws std::system_error  the system cannot watch it; nothing has changed then
    void watch(int descriptor, Task onReadable);
    void unwatch(int descriptor);

    /// Runs tasks until `stop()`; what was posted before that runs as well.
    void run();
    void stop();
    /// Drops what was posted since, with what it owns.
    void discard();

private:
    using Clock = std::chrono::steady_clock;
    /// What is due next comes first; of what is due at once, the oldest.
    using Timers = std::map<std::pair<Clock::time_point, Timer>, Task>;
    using Dues = std::map<Timer, Clock::time_point>;
    /// A timer that is taken out of both maps, to be put back without memory.
    struct DueTimer {
        Timers::node_type timer;
        Dues::node_type due;
    };
    /// Has a number of its own: that of its descriptor may be another's by the time that an event is looked at.
    struct Watch {
        std::uint32_t number;
        std::shared_ptr<Task> onReadable;
    };

    int findPatience();
    void runPosted();
    void runDueTimers(Clock::time_point now);
    /// @return the timer that is due, taken out of all; empty where none is
    DueTimer takeDueTimer(Clock::time_point now);
    void runAgain(DueTimer again);
    std::shared_ptr<Task> findWatch(std::uint64_t event);
    void wakeUp();

    std::mutex& lock;
    const Corvane::FileDescriptor epoll;
    const Corvane::FileDescriptor wakeUpEvent;
    std::atomic<bool> stopping{false};
    std::atomic<std::thread::id> runner; ///< needs no waking up
    std::mutex mutex;                    ///< guards what follows; nothing is called under it
    std::vector<Task> posted;
    Timers timers;
    Dues dues;
    std::map<int, Watch> watches; ///< by descriptor
    Timer lastTimer = 0;
    std::uint32_t lastWatch = 0;
};

} // namespace Procmand
