#include <corvane/common/SignalDeferral.h>

#include "DeferringMutex.h"

#include <bit>
#include <csignal>

namespace Corvane
{

constinit thread_local SignalDeferral signalDeferral;

namespace
{

/// @return whether an instruction may have raised the signal, which is then raised again for as long as it is put off
bool mayBeFault(int signal)
{
    return signal == SIGILL || signal == SIGFPE || signal == SIGSEGV || signal == SIGBUS;
}

} // namespace

bool deferSignal(int signal)
{
    const std::uint32_t bit = std::uint32_t{1} << signal; // all that are fatal have numbers below 32
    if (!DeferringMutex::isInSection())
        return false;
    const bool waitsAlready = (signalDeferral.waiting.fetch_or(bit, std::memory_order_relaxed) & bit) != 0;
    return !waitsAlready || !mayBeFault(signal);
}

void DeferringMutex::raiseWaitingSignals()
{
    for (auto waiting = signalDeferral.waiting.exchange(0, std::memory_order_relaxed); waiting != 0;
         waiting &= waiting - 1)
        raise(std::countr_zero(waiting));
}

} // namespace Corvane
