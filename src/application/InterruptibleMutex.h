#pragma once

#include <atomic>
#include <corvane/foundation/Mutex.h>

namespace Corvane
{

/// A mutex that knows whether its own thread has it: for what a signal handler needs that may interrupt its holder.
///
/// The handler of a fatal signal must not wait for the thread that it runs on. Where it interrupted the very code that
/// holds the mutex, it goes on without, and finds what the mutex guards as it stands; so whoever changes that holds
/// signals off while it is not whole.
///
/// Made on the stack around one use, by the thread that uses it; every user of a mutex goes this way.
///
///     InterruptibleMutex mutex(listenersMutex);
///     const std::lock_guard guard(mutex);
class InterruptibleMutex
{
public:
    explicit InterruptibleMutex(Mutex& mutex) : mutex(mutex) {}
    InterruptibleMutex(const InterruptibleMutex&) = delete;
    InterruptibleMutex& operator=(const InterruptibleMutex&) = delete;

    void lock();
    void unlock();

private:
    InterruptibleMutex* findInterrupted() const;
    bool takeBeside(InterruptibleMutex& interrupted);

    Mutex& mutex;
    InterruptibleMutex* outer = nullptr; ///< what this thread took before and has not given back
    std::atomic<bool> isTaken{false};    ///< true only while this thread has the mutex, for certain
    bool isBorrowed = false;             ///< the code that was interrupted has it
};

} // namespace Corvane
