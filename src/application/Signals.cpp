#include <corvane/Application.h>

#include "../../platform/common/src/SignalMask.h"
#include "BackTrace.h"
#include "Containment.h"
#include "InterruptibleMutex.h"

#include <algorithm>
#include <atomic>
#include <corvane/Foundation.h>
#include <corvane/common/SignalDeferral.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace Corvane
{

std::vector<Application*> applications;
Mutex shutdownMutex("Application::shutdownHandler", 0);

namespace
{

constexpr char MODULE[] = "Application";
constexpr char COMPONENT[] = "Application";

struct HandledSignal {
    int number;
    bool wantsBackTrace;
    struct sigaction previous; ///< what was in force before the first application of the process
};

HandledSignal handledSignals[] = {
    {SIGILL, true, {}},
    {SIGABRT, true, {}},
    {SIGFPE, true, {}},
    // Deliberate: it cannot be caught. The attempt to install the handler fails without notice.
    {SIGKILL, false, {}},
    {SIGSEGV, true, {}},
    {SIGTERM, false, {}},
    {SIGBUS, true, {}},
};

/// Calls of initSignalHandler that have not been undone. Guarded by `shutdownMutex`.
unsigned int signalUsers = 0;

/// Whether the handlers are in force.
std::atomic<bool> handlersInstalled{false};

void restoreSignalHandlers()
{
    handlersInstalled = false;
    for (const HandledSignal& handled : handledSignals)
        sigaction(handled.number, &handled.previous, nullptr);
}

/// Gives the signals back when the process exits with applications in it, as after an `exit()` from within a main loop:
/// what the handler uses is destroyed then. Without the lock, which is held where a listener of an abort calls
/// `exit()`.
void restoreAtExit()
{
    if (handlersInstalled)
        restoreSignalHandlers();
}

void installSignalHandlers(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    for (HandledSignal& handled : handledSignals) {
        sigaction(handled.number, nullptr, &handled.previous);
        if (handled.previous.sa_handler != SIG_IGN)
            sigaction(handled.number, &action, nullptr);
    }
    handlersInstalled = true;
    // Registered now, when every library has been loaded, it runs before the static objects of any of them go.
    [[maybe_unused]] static const int REGISTERED = std::atexit(restoreAtExit);
}

/// @return the signals that the handler is for
sigset_t fatalSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const HandledSignal& handled : handledSignals)
        sigaddset(&signals, handled.number);
    return signals;
}

/// How many of `applications` the announcement under way has come to. Guarded by `shutdownMutex`.
std::size_t announced = 0;

/// One application's listeners must not keep the others from hearing of the end, nor the process from ending: no
/// exception leaves a signal handler.
void announceAbort(Application& application)
{
    contain(__func__, __LINE__, [&] { application.setState(ILifecycleManagement::STATE_ABORTED); });
}

/// A further signal from outside waits until all have heard. An abort() of a listener does not: it comes back to here,
/// and the announcement goes on behind the application whose listener that was.
void announceAborts()
{
    const SignalMask mask(SIG_BLOCK, fatalSignals());
    InterruptibleMutex interruptible(shutdownMutex);
    const std::lock_guard guard(interruptible);
    while (announced < applications.size())
        announceAbort(*applications[announced++]);
    announced = 0;
}

/// Lets the signal take its previous course, which ends the process as a rule.
void raiseAgain(int signal)
{
    restoreSignalHandlers();
    raise(signal);
}

/// The same from within another handler, which may have interrupted that of the signal.
void raiseAgainAtOnce(int signal)
{
    const SignalMask mask(SIG_UNBLOCK, fatalSignals());
    raiseAgain(signal);
}

} // namespace

void Application::initSignalHandler(Application* application)
{
    prepareBackTrace();
    const SignalMask mask(SIG_BLOCK, SignalMask::asynchronousSignals());
    InterruptibleMutex interruptible(shutdownMutex);
    const std::lock_guard guard(interruptible);
    if (signalUsers++ == 0)
        installSignalHandlers(&Application::signalHandler);
    applications.push_back(application);
}

void Application::uninitSignalHandler(Application* application)
{
    const SignalMask mask(SIG_BLOCK, SignalMask::asynchronousSignals());
    InterruptibleMutex interruptible(shutdownMutex);
    const std::lock_guard guard(interruptible);
    const auto entry = std::find(applications.begin(), applications.end(), application);
    if (entry != applications.end())
        applications.erase(entry);
    // Deliberate: counted down for an application that was never initialised, too, and it wraps then.
    if (--signalUsers == 0)
        restoreSignalHandlers();
}

// Deliberate: a mutex, listeners and formatted output are not safe in a signal handler. The managers must hear of the
// end of this process, and it ends anyway. It waits for no lock that the interrupted code of its own thread has taken
// through the library; docs/reliability.md tells what else it may wait for.
void Application::signalHandler(int signal)
{
    if (deferSignal(signal))
        return;
    corvaneDebugPrint(DEBUG_NOTICE, MODULE, COMPONENT, __LINE__, "Received Signal [%s]\n", strsignal(signal));
    const auto* const handled = std::find_if(std::begin(handledSignals), std::end(handledSignals),
                                             [signal](const HandledSignal& each) { return each.number == signal; });
    if (handled == std::end(handledSignals))
        return;
    announceAborts();
    if (handled->wantsBackTrace)
        printBackTrace(signal, raiseAgainAtOnce);
    raiseAgain(signal);
}

} // namespace Corvane
