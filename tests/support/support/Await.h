#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace Corvane::Test
{

/// How long a test waits for what must happen. It is no measure of speed: only a broken test ever waits that long.
constexpr std::chrono::seconds DEADLINE{30};

/// Waits until `condition()` holds; for states that nothing announces. @return whether it held before the deadline
template <class Condition>
bool await(Condition condition, std::chrono::milliseconds deadline = DEADLINE)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// Hands values from the thread where they arise to the test that waits for them.
template <class T>
class Mailbox
{
public:
    void put(T value)
    {
        std::lock_guard guard(mutex);
        values.push_back(std::move(value));
        filled.notify_all();
    }

    /// Takes the next value into `value`. @return false when none came before the deadline
    bool take(T& value, std::chrono::milliseconds deadline = DEADLINE)
    {
        std::unique_lock lock(mutex);
        if (!filled.wait_for(lock, deadline, [this] { return !values.empty(); }))
            return false;
        value = std::move(values.front());
        values.pop_front();
        return true;
    }

    bool isEmpty()
    {
        std::lock_guard guard(mutex);
        return values.empty();
    }

private:
    std::mutex mutex;
    std::condition_variable filled;
    std::deque<T> values;
};

} // namespace Corvane::Test
