#include "InterruptibleMutex.h"

#include <corvane/common/TaskDelay.h>

namespace Corvane
{

namespace
{

/// What this thread has taken, or is about to take, the latest first. In the memory that every thread has from its
/// start: a handler must not have to allocate it.
[[gnu::tls_model("initial-exec")]] thread_local constinit std::atomic<InterruptibleMutex*> innermost{nullptr};

/// Keeps the compiler from moving what a handler of this thread must see in this order; the processor does so anyway.
void orderForHandlers()
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

} // namespace

void InterruptibleMutex::lock()
{
    InterruptibleMutex* const interrupted = findInterrupted();
    outer = innermost.load(std::memory_order_relaxed);
    innermost.store(this, std::memory_order_relaxed);
    orderForHandlers();
    isBorrowed = interrupted != nullptr && !takeBeside(*interrupted);
    if (interrupted == nullptr)
        mutex.lock();
    orderForHandlers();
    isTaken.store(true, std::memory_order_relaxed);
}

void InterruptibleMutex::unlock()
{
    isTaken.store(false, std::memory_order_relaxed);
    orderForHandlers();
    if (!isBorrowed)
        mutex.unlock();
    orderForHandlers();
    innermost.store(outer, std::memory_order_relaxed);
}

/// @return the nearest use of the same mutex that this one has interrupted, or null. No code of a thread takes a mutex
/// that it has, so there is one only in a signal handler.
InterruptibleMutex* InterruptibleMutex::findInterrupted() const
{
    InterruptibleMutex* each = innermost.load(std::memory_order_relaxed);
    while (each != nullptr && &each->mutex != &mutex)
        each = each->outer;
    return each;
}

/// Takes the mutex from within a handler. Where the interrupted code was only about to take it, or had just given it
/// back, another thread may have it, and will give it back; where it has just got it, nobody will. That cannot be told
/// apart, and so has a limit, once.
/// @return false when the mutex is the interrupted code's
bool InterruptibleMutex::takeBeside(InterruptibleMutex& interrupted)
{
    constexpr int ATTEMPTS = 100;
    constexpr unsigned int PAUSE_MS = 1;
    for (int i = 0; i < ATTEMPTS && !interrupted.isTaken.load(std::memory_order_relaxed); ++i) {
        if (mutex.try_lock())
            return true;
        OS_TaskDelayMsec(PAUSE_MS);
    }
    interrupted.isTaken.store(true, std::memory_order_relaxed);
    return false;
}

} // namespace Corvane
