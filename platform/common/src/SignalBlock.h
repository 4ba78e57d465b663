#pragma once

#include <csignal>

namespace Corvane
{

/// Holds off the calling thread's asynchronous signals for the length of a scope, so that a handler cannot interrupt it
/// while it holds a lock that the handler needs. Faults of the thread itself stay open: they cannot be put off.
class SignalBlock
{
public:
    SignalBlock()
    {
        const sigset_t asynchronous = asynchronousSignals();
        pthread_sigmask(SIG_BLOCK, &asynchronous, &previous);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &previous, nullptr); }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

    /// @return every signal but those that a thread's own fault raises
    static sigset_t asynchronousSignals()
    {
        sigset_t signals;
        sigfillset(&signals);
        for (int fault : {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS, SIGTRAP})
            sigdelset(&signals, fault);
        return signals;
    }

private:
    sigset_t previous;
};

} // namespace Corvane
