#include "BackTrace.h"

#include "../../platform/common/src/SignalMask.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

namespace Corvane
{

namespace
{

struct Trace {
    static constexpr int FRAME_LIMIT = 10;

    int signal;
    void (*end)(int);
    int count = 0;
    void* frames[FRAME_LIMIT] = {};
};

constexpr itimerval HALF_SECONDS = {{0, 500'000}, {0, 500'000}};
constexpr itimerval NEVER = {};

/// What the deadline below is for.
std::atomic<const Trace*> current{nullptr};
/// What is not yet printed when its time is up.
std::atomic<const Trace*> unprinted{nullptr};

void print(const Trace& trace)
{
    char** const lines = backtrace_symbols(trace.frames, trace.count);
    std::printf("Obtained %zd stack frames.\n", static_cast<ssize_t>(trace.count));
    for (int i = 0; lines != nullptr && i < trace.count; ++i)
        std::puts(lines[i]);
    std::free(lines);
    // The process dies without flushing anything.
    std::fflush(stdout);
}

void printWithoutHeap(const Trace& trace)
{
    char line[64];
    const int length =
        std::snprintf(line, sizeof line, "Obtained %zd stack frames.\n", static_cast<ssize_t>(trace.count));
    if (write(STDOUT_FILENO, line, static_cast<std::size_t>(length)) == length)
        backtrace_symbols_fd(trace.frames, trace.count, STDOUT_FILENO);
}

void endAtDeadline(int)
{
    const Trace* const trace = current;
    if (trace == nullptr)
        return;
    if (const Trace* const late = unprinted.exchange(nullptr))
        printWithoutHeap(*late);
    setitimer(ITIMER_REAL, &NEVER, nullptr);
    trace->end(trace->signal);
}

/// Takes SIGALRM and its clock while a back trace is printed. Both are given back: the action that was there before the
/// library's may let the process live.
class Deadline
{
public:
    explicit Deadline(const Trace& trace) : mask(SIG_UNBLOCK, alarm())
    {
        unprinted = &trace;
        current = &trace;
        struct sigaction action = {};
        action.sa_handler = endAtDeadline;
        // The second one interrupts the first, where that waits for a reader.
        action.sa_flags = SA_NODEFER;
        sigaction(SIGALRM, &action, &previousAction);
        setitimer(ITIMER_REAL, &HALF_SECONDS, &previousTimer);
    }
    ~Deadline()
    {
        current = nullptr;
        unprinted = nullptr;
        setitimer(ITIMER_REAL, &previousTimer, nullptr);
        sigaction(SIGALRM, &previousAction, nullptr);
    }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

private:
    static sigset_t alarm()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGALRM);
        return signals;
    }

    const SignalMask mask;
    struct sigaction previousAction = {};
    itimerval previousTimer = {};
};

} // namespace

void prepareBackTrace()
{
    void* frame = nullptr;
    backtrace(&frame, 1);
}

void printBackTrace(int signal, void (*end)(int signal))
{
    Trace trace{.signal = signal, .end = end};
    trace.count = backtrace(trace.frames, Trace::FRAME_LIMIT);
    const Deadline deadline(trace);
    print(trace);
}

} // namespace Corvane
