#pragma once

#include <csignal>
#include <initializer_list>

namespace Corvane
{

/// Changes which signals the calling thread holds off, for the length of a scope.
class SignalMask
{
public:
    /// @param how  SIG_BLOCK, SIG_UNBLOCK or SIG_SETMASK, as of pthread_sigmask(3)
    SignalMask(int how, const sigset_t& signals) { pthread_sigmask(how, &signals, &previous); }
    ~SignalMask() { pthread_sigmask(SIG_SETMASK, &previous, nullptr); }
    SignalMask(const SignalMask&) = delete;
    SignalMask& operator=(const SignalMask&) = delete;

    /// @return every signal. A fault of the thread itself cannot be put off: it ends the process at once then.
    static sigset_t allSignals()
    {
        sigset_t signals;
        sigfillset(&signals);
        return signals;
    }
    /// @return every signal but those that a thread's own fault raises
    static sigset_t asynchronousSignals()
    {
        sigset_t signals = allSignals();
        for (int fault : {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS, SIGTRAP})
            sigdelset(&signals, fault);
        return signals;
    }

private:
    sigset_t previous;
};

} // namespace Corvane
