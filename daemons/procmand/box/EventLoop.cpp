#include "box/EventLoop.h"

#include "box/Containment.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace Procmand
{

namespace
{

/// How soon a timer is run again that lacked memory.
constexpr std::chrono::milliseconds MEMORY_DELAY{100};

/// @return what tells the events of a watch apart
std::uint64_t eventOf(int descriptor, std::uint32_t number)
{
    return std::uint64_t{number} << 32 | static_cast<std::uint32_t>(descriptor);
}

} // namespace

EventLoop::EventLoop(std::mutex& lock)
    : lock(lock), epoll(epoll_create1(EPOLL_CLOEXEC)), wakeUpEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    watch(wakeUpEvent.get(), [this] {
        eventfd_t count{};
        eventfd_read(wakeUpEvent.get(), &count);
    });
}

void EventLoop::post(Task task)
{
    {
        std::lock_guard guard(mutex);
        posted.push_back(std::move(task));
    }
    wakeUp();
}

EventLoop::Timer EventLoop::schedule(std::chrono::milliseconds delay, Task task)
{
    Timer timer = 0;
    {
        std::lock_guard guard(mutex);
        timer = ++lastTimer;
        const auto due = Clock::now() + delay;
        const auto entry = timers.emplace(std::pair(due, timer), std::move(task)).first;
        try {
            dues.emplace(timer, due);
        } catch (...) {
            timers.erase(entry);
            throw;
        }
    }
    wakeUp();
    return timer;
}

void EventLoop::cancel(Timer& timer)
{
    std::lock_guard guard(mutex);
    if (const auto due = dues.find(timer); due != dues.end()) {
        timers.erase({due->second, timer});
        dues.erase(due);
    }
    timer = 0;
}

void EventLoop::watch(int descriptor, Task onReadable)
{
    std::lock_guard guard(mutex);
    const auto [entry, isNew] =
        watches.try_emplace(descriptor, Watch{++lastWatch, std::make_shared<Task>(std::move(onReadable))});
    epoll_event event{.events = EPOLLIN, .data = {.u64 = eventOf(descriptor, lastWatch)}};
    if (epoll_ctl(epoll.get(), EPOLL_CTL_ADD, descriptor, &event) == 0)
        return;
    const int error = errno;
    if (isNew)
        watches.erase(entry);
    throw std::system_error(error, std::generic_category(), "cannot watch a descriptor");
}

void EventLoop::unwatch(int descriptor)
{
    std::lock_guard guard(mutex);
    watches.erase(descriptor);
    epoll_ctl(epoll.get(), EPOLL_CTL_DEL, descriptor, nullptr);
}

void EventLoop::run()
{
    runner = std::this_thread::get_id();
    std::array<epoll_event, 32> events{};
    while (!stopping) {
        const int count = epoll_wait(epoll.get(), events.data(), events.size(), findPatience());
        std::lock_guard guard(lock);
        // What is due now waits for what was posted before: a deadline must not pass while the word that keeps it is in
        // the queue, however long the queue takes.
        const Clock::time_point now = Clock::now();
        runPosted();
        runDueTimers(now);
        for (int i = 0; i < count; ++i)
            // Looked up again each time: a task may unwatch what is to come.
            if (const auto task = findWatch(events[static_cast<std::size_t>(i)].data.u64))
                contain("EventLoop", *task);
    }
    std::lock_guard guard(lock);
    runPosted();
    runner = std::thread::id();
}

void EventLoop::stop()
{
    stopping = true;
    wakeUp();
}

void EventLoop::discard()
{
    std::vector<Task> tasks; // destroyed outside of the lock: what they own may post something once more
    std::lock_guard guard(mutex);
    tasks.swap(posted);
}

int EventLoop::findPatience()
{
    std::lock_guard guard(mutex);
    if (!posted.empty())
        return 0;
    if (timers.empty())
        return -1;
    const Clock::time_point due = timers.begin()->first.first;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

void EventLoop::runPosted()
{
    std::vector<Task> tasks;
    {
        std::lock_guard guard(mutex);
        tasks.swap(posted);
    }
    for (const Task& task : tasks)
        contain("EventLoop", task);
}

void EventLoop::runDueTimers(Clock::time_point now)
{
    for (DueTimer next = takeDueTimer(now); next.timer; next = takeDueTimer(now))
        contain("EventLoop", [&] {
            try {
                next.timer.mapped()();
            } catch (const std::bad_alloc&) {
                runAgain(std::move(next));
                throw;
            }
        });
}

EventLoop::DueTimer EventLoop::takeDueTimer(Clock::time_point now)
{
    std::lock_guard guard(mutex);
    if (timers.empty() || timers.begin()->first.first > now)
        return {};
    Dues::node_type due = dues.extract(timers.begin()->first.second);
    return {.timer = timers.extract(timers.begin()), .due = std::move(due)};
}

void EventLoop::runAgain(DueTimer again)
{
    std::lock_guard guard(mutex);
    again.due.mapped() = again.timer.key().first = Clock::now() + MEMORY_DELAY;
    dues.insert(std::move(again.due));
    timers.insert(std::move(again.timer));
}

std::shared_ptr<EventLoop::Task> EventLoop::findWatch(std::uint64_t event)
{
    std::lock_guard guard(mutex);
    const auto descriptor = static_cast<int>(event & UINT32_MAX);
    const auto found = watches.find(descriptor);
    if (found == watches.end() || eventOf(descriptor, found->second.number) != event)
        return nullptr;
    return found->second.onReadable;
}

void EventLoop::wakeUp()
{
    if (runner.load() != std::this_thread::get_id())
        eventfd_write(wakeUpEvent.get(), 1);
}

} // namespace Procmand
