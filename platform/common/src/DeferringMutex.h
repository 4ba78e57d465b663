#pragma once

#include <atomic>
#include <corvane/foundation/Mutex.h>
#include <cstdint>

namespace Corvane
{

/// What a thread knows of its signals. Written by the thread itself and by the handlers that interrupt it.
struct SignalDeferral {
    std::atomic<bool> isInside{false};     ///< in the section of a DeferringMutex
    std::atomic<std::uint32_t> waiting{0}; ///< signals to be raised at its end, a bit for each
};

// Initial-exec: the first look at a variable of another model may allocate memory, which a handler must not.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local SignalDeferral signalDeferral;

/// A mutex that the announcement of a fatal signal takes as well: a signal that interrupts the thread that holds it or
/// waits for it is put off until it is free (see deferSignal). That costs no system call, as holding signals off would.
///
/// A thread holds one such mutex at a time, and calls nothing under it that could call back.
class DeferringMutex
{
public:
    explicit DeferringMutex(const char* name) : mutex(name, 0) {}

    void lock()
    {
        signalDeferral.isInside.store(true, std::memory_order_relaxed);
        mutex.lock();
    }

    void unlock()
    {
        mutex.unlock();
        signalDeferral.isInside.store(false, std::memory_order_relaxed);
        if (signalDeferral.waiting.load(std::memory_order_relaxed) != 0)
            raiseWaitingSignals();
    }

    /// @return whether the calling thread is in a section of a mutex of this class: then it is the handler of a fault
    /// in that section
    static bool isInSection() { return signalDeferral.isInside.load(std::memory_order_relaxed); }

private:
    static void raiseWaitingSignals();

    Mutex mutex;
};

} // namespace Corvane
