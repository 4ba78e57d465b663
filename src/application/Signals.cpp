#include <corvane/Application.h>

#include "Containment.h"

#include <algorithm>
#include <atomic>
#include <corvane/Foundation.h>
#include <corvane/common/SignalDeferral.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <mutex>
#include <sys/types.h>

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

/// One application's listeners must not keep the others from hearing of the end, nor the process from ending: no
/// exception leaves a signal handler.
void announceAbort(Application& application)
{
    contain(__func__, __LINE__, [&] { application.setState(ILifecycleManagement::STATE_ABORTED); });
}

void printBackTrace()
{
    constexpr int FRAME_LIMIT = 10;
    void* frames[FRAME_LIMIT];
    const int count = backtrace(frames, FRAME_LIMIT);
    char** const lines = backtrace_symbols(frames, count);
    std::printf("Obtained %zd stack frames.\n", static_cast<ssize_t>(count));
    for (int i = 0; lines != nullptr && i < count; ++i)
        std::puts(lines[i]);
    std::free(lines);
    // The process dies without flushing anything.
    std::fflush(stdout);
}

} // namespace

void Application::initSignalHandler(Application* application)
{
    const std::lock_guard<Mutex> guard(shutdownMutex);
    if (signalUsers++ == 0)
        installSignalHandlers(&Application::signalHandler);
    applications.push_back(application);
}

void Application::uninitSignalHandler(Application* application)
{
    const std::lock_guard<Mutex> guard(shutdownMutex);
    const auto entry = std::find(applications.begin(), applications.end(), application);
    if (entry != applications.end())
        applications.erase(entry);
    // Deliberate: counted down for an application that was never initialised, too, and it wraps then.
    if (--signalUsers == 0)
        restoreSignalHandlers();
}

// Deliberate: a mutex, listeners and formatted output are not safe in a signal handler. The managers must hear of the
// end of this process, and it ends anyway. It hangs where the interrupted thread holds what the handler waits for:
// `shutdownMutex`, the mutex of an application's listeners, or a lock that a listener or the back trace takes, the
// heap's for one. docs/threading.md has the cases.
void Application::signalHandler(int signal)
{
    if (deferSignal(signal))
        return;
    corvaneDebugPrint(DEBUG_NOTICE, MODULE, COMPONENT, __LINE__, "Received Signal [%s]\n", strsignal(signal));
    const auto* const handled = std::find_if(std::begin(handledSignals), std::end(handledSignals),
                                             [signal](const HandledSignal& each) { return each.number == signal; });
    if (handled == std::end(handledSignals))
        return;
    {
        const std::lock_guard<Mutex> guard(shutdownMutex);
        for (Application* application : applications)
            announceAbort(*application);
    }
    if (handled->wantsBackTrace)
        printBackTrace();
    restoreSignalHandlers();
    raise(signal);
}

} // namespace Corvane
