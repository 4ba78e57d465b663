#include "box/EventLoop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>

namespace Procmand
{

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
        timers.emplace(timer, TimedTask{Clock::now() + delay, std::move(task)});
    }
    wakeUp();
    return timer;
}

void EventLoop::cancel(Timer& timer)
{
    std::lock_guard guard(mutex);
    timers.erase(timer);
    timer = 0;
}

void EventLoop::watch(int descriptor, Task onReadable)
{
    {
        std::lock_guard guard(mutex);
        watches[descriptor] = std::make_shared<Task>(std::move(onReadable));
    }
    epoll_event event{.events = EPOLLIN, .data = {.fd = descriptor}};
    if (epoll_ctl(epoll.get(), EPOLL_CTL_ADD, descriptor, &event) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot watch a descriptor");
}

void EventLoop::unwatch(int descriptor)
{
    std::lock_guard guard(mutex);
    watches.erase(descriptor);
    epoll_ctl(epoll.get(), EPOLL_CTL_DEL, descriptor, nullptr);
}

void EventLoop::run()
{
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
            if (const auto task = findWatch(events[static_cast<std::size_t>(i)].data.fd))
                (*task)();
    }
    std::lock_guard guard(lock);
    runPosted();
}

void EventLoop::stop()
{
    stopping = true;
    wakeUp();
}

std::map<EventLoop::Timer, EventLoop::TimedTask>::iterator EventLoop::findNextTimer()
{
    return std::min_element(timers.begin(), timers.end(),
                            [](const auto& one, const auto& other) { return one.second.due < other.second.due; });
}

void EventLoop::discard()
{
    std::deque<Task> tasks; // destroyed outside of the lock: what they own may post something once more
    std::lock_guard guard(mutex);
    tasks.swap(posted);
}

int EventLoop::findPatience()
{
    std::lock_guard guard(mutex);
    if (!posted.empty())
        return 0;
    const auto next = findNextTimer();
    if (next == timers.end())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next->second.due - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

void EventLoop::runPosted()
{
    std::deque<Task> tasks;
    {
        std::lock_guard guard(mutex);
        tasks.swap(posted);
    }
    for (const Task& task : tasks)
        task();
}

void EventLoop::runDueTimers(Clock::time_point now)
{
    while (const std::optional<Task> task = takeDueTimer(now))
        (*task)();
}

std::optional<EventLoop::Task> EventLoop::takeDueTimer(Clock::time_point now)
{
    std::lock_guard guard(mutex);
    const auto next = findNextTimer();
    if (next == timers.end() || next->second.due > now)
        return std::nullopt;
    Task task = std::move(next->second.task);
    timers.erase(next);
    return task;
}

std::shared_ptr<EventLoop::Task> EventLoop::findWatch(int descriptor)
{
    std::lock_guard guard(mutex);
    const auto found = watches.find(descriptor);
    return found == watches.end() ? nullptr : found->second;
}

void EventLoop::wakeUp()
{
    eventfd_write(wakeUpEvent.get(), 1);
}

} // namespace Procmand
