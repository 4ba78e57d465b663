#include <corvane/Application.h>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

// A program for tests of signals: it does what the words of its command line say, one after the other, and tells on
// standard output what happens.

namespace
{

using Corvane::Application;
using Corvane::ILifecycleManagement;

constexpr int HANDLED[] = {SIGILL, SIGABRT, SIGFPE, SIGKILL, SIGSEGV, SIGTERM, SIGBUS};

bool tracesActions = false;
bool clockStands = false;
bool outputIsBlocked = false;
#ifdef OUTLIVES_THE_LIBRARIES
bool raisesTermLast = false;
#endif
/// The object in which a mutex lies that SIGTERM is to meet: `after` it was taken, or before it is given back.
const char* interrupted = nullptr;
std::size_t interruptedSize = 0;
bool interruptsAfterLock = false;

/// Tells without a buffer: the process may die at any time.
[[gnu::format(printf, 1, 2)]] void tell(const char* format, ...)
{
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (outputIsBlocked)
        return;
    if (write(STDOUT_FILENO, line, static_cast<std::size_t>(length)) != length)
        _exit(99);
}

/// An application that tells each change of its state.
class Victim : public Application
{
public:
    Victim(int argc, char** argv, int number) : Application(argc, argv), listener(number) { addListener(&listener); }
    ~Victim() override { removeListener(&listener); }

    struct Listener : Corvane::IApplication::IApplicationListener {
        explicit Listener(int number) : number(number) {}
        void onKeepAlive(const std::string&, const std::string&) override {}
        void onStateChange(const std::string&, const std::string&, const std::string& newState) override
        {
            tell("application %d: %s\n", number, newState.c_str());
            if (throwsWhenAborted && newState == ILifecycleManagement::STATE_ABORTED)
                throw std::runtime_error("listener");
            if (exitsWhenAborted && newState == ILifecycleManagement::STATE_ABORTED)
                std::exit(43);
            if (whenAborted && newState == ILifecycleManagement::STATE_ABORTED)
                whenAborted();
        }
        const int number;
        bool throwsWhenAborted = false;
        bool exitsWhenAborted = false;
        void (*whenAborted)() = nullptr;
    } listener;
};

[[gnu::noinline]] void faultInMemory(int depth)
{
    if (depth > 0)
        faultInMemory(depth - 1);
    else
        *static_cast<volatile char*>(mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) = 1;
    // Behind the call, so that it is no tail call and each level has a frame.
    tell("still here\n");
}

void faultOnBus()
{
    const int emptyFile = memfd_create("empty", MFD_CLOEXEC);
    *static_cast<volatile char*>(mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, emptyFile, 0)) = 1;
}

/// Writes behind a block of the heap, which the C library finds in the next allocation, with the heap's lock held.
void overrunHeap()
{
    // The heap takes its lock where there is a second thread only.
    std::thread([] { pause(); }).detach();
    constexpr std::size_t SIZE = 100'000; // more than any block that was freed, so the last one of the heap
    // Volatile twice: the compiler knows neither the block's size nor that nobody reads it.
    volatile char* volatile block = static_cast<volatile char*>(std::malloc(SIZE));
    for (std::size_t i = 0; i < 64; ++i)
        block[SIZE + i] = '\xff';
    void* volatile next = std::malloc(SIZE);
    std::free(next);
}

/// Makes standard output a pipe that is full, and that nobody reads. The listeners are silent from then on.
void blockOutput()
{
    outputIsBlocked = true;
    int ends[2];
    if (pipe2(ends, O_NONBLOCK) != 0)
        _exit(99);
    const char filling[4096] = {};
    while (write(ends[1], filling, sizeof filling) > 0) {
    }
    fcntl(ends[1], F_SETFL, 0);
    dup2(ends[1], STDOUT_FILENO);
}

template <class Object>
void interruptHolderOf(const Object& object, bool afterLock)
{
    interrupted = reinterpret_cast<const char*>(&object);
    interruptedSize = sizeof object;
    interruptsAfterLock = afterLock;
}

#ifdef INTERRUPTS_LOCKS
/// Sends this thread SIGTERM, once, while it has the mutex.
void interrupt(const pthread_mutex_t* mutex, bool afterLock)
{
    const char* const place = reinterpret_cast<const char*>(mutex);
    if (interrupted == nullptr || afterLock != interruptsAfterLock || place < interrupted ||
        place >= interrupted + interruptedSize)
        return;
    interrupted = nullptr;
    raise(SIGTERM);
}
#endif

template <class Function>
Function real(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

const char* nameOf(int signal)
{
    return sigabbrev_np(signal);
}

void exitWith42(int)
{
    _exit(42);
}

void reportActions()
{
    for (const int signal : HANDLED) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        const bool isOwn = action.sa_handler == exitWith42;
        const char* const what = action.sa_handler == SIG_DFL   ? "default"
                                 : action.sa_handler == SIG_IGN ? "ignored"
                                 : isOwn                        ? "own"
                                                                : "handled";
        tell("%s:%s ", nameOf(signal), what);
    }
    tell("\n");
}

/// @return what a caller holds when its listener is long gone: the address of memory that nobody may read
Corvane::IListener* staleListener()
{
    return static_cast<Corvane::IListener*>(mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}

/// Gives a signal to the library's handler that the handler was not installed for.
void callHandlerWithUser1()
{
    struct sigaction action = {};
    sigaction(SIGTERM, nullptr, &action);
    action.sa_handler(SIGUSR1);
    tell("returned\n");
}

#ifdef OUTLIVES_THE_LIBRARIES
/// The very last that runs in this process: after the static objects of the libraries are gone.
void runLast(int, void*)
{
    if (!raisesTermLast)
        return;
    tell("the libraries are gone\n");
    raise(SIGTERM);
}

void registerBeforeTheLibraries()
{
    on_exit(runLast, nullptr);
}

__attribute__((used, section(".preinit_array"))) void (*const EARLY)() = registerBeforeTheLibraries;
#endif

class Script
{
public:
    Script(int argc, char** argv) : argc(argc), argv(argv) {}
    bool perform(const std::string& word)
    {
        const auto command = commands.find(word);
        if (command == commands.end())
            return false;
        command->second();
        return true;
    }

private:
    void construct() { victims.push_back(std::make_unique<Victim>(argc, argv, count++)); }

    const int argc;
    char** const argv;
    int count = 0;
    Victim::Listener further{99};
    std::deque<std::unique_ptr<Victim>> victims;
    const std::map<std::string, std::function<void()>> commands{
        {"construct", [this] { construct(); }},
        {"create",
         [this] {
             construct();
             victims.back()->init();
         }},
        {"let-listener-throw", [this] { victims.back()->listener.throwsWhenAborted = true; }},
        {"let-listener-exit", [this] { victims.back()->listener.exitsWhenAborted = true; }},
        {"let-listener-abort", [this] { victims.back()->listener.whenAborted = std::abort; }},
        {"let-listener-fault", [this] { victims.back()->listener.whenAborted = [] { faultInMemory(0); }; }},
        {"let-listener-be-killed", [this] { victims.back()->listener.whenAborted = [] { kill(getpid(), SIGABRT); }; }},
        {"interrupt-list-after-lock", [this] { interruptHolderOf(*victims.back(), true); }},
        {"interrupt-list-before-unlock", [this] { interruptHolderOf(*victims.back(), false); }},
        {"interrupt-applications-after-lock", [] { interruptHolderOf(Corvane::shutdownMutex, true); }},
        {"interrupt-applications-before-unlock", [] { interruptHolderOf(Corvane::shutdownMutex, false); }},
        {"change-state", [this] { victims.back()->setState(ILifecycleManagement::STATE_RUNNING); }},
        {"add-listener", [this] { victims.back()->addListener(&further); }},
        {"remove-listener", [this] { victims.back()->removeListener(&further); }},
        {"add-stale-listener", [this] { victims.back()->addListener(staleListener()); }},
        {"remove-stale-listener", [this] { victims.back()->removeListener(staleListener()); }},
        {"destroy-first", [this] { victims.pop_front(); }},
        {"ignore-ill", [] { signal(SIGILL, SIG_IGN); }},
        {"ignore-term", [] { signal(SIGTERM, SIG_IGN); }},
        {"own-action-for-term", [] { signal(SIGTERM, exitWith42); }},
        {"report", reportActions},
        {"trace", [] { tracesActions = true; }},
        {"call-handler-with-usr1", callHandlerWithUser1},
        {"fault-segv", [] { faultInMemory(0); }},
        {"fault-segv-deep", [] { faultInMemory(30); }},
        {"fault-segv-on-thread", [] { std::thread(faultInMemory, 0).join(); }},
        {"fault-bus", faultOnBus},
        {"fault-ill", [] { __builtin_trap(); }},
        {"abort", [] { std::abort(); }},
        {"overrun-heap", overrunHeap},
        {"block-output", blockOutput},
        {"statistics-twice-at-once",
         [this] {
             clockStands = true;
             victims.back()->getRuntimeStatistics();
             victims.back()->getRuntimeStatistics();
         }},
        {"raise-term", [] { raise(SIGTERM); }},
        {"exit", [] { std::exit(0); }},
#ifdef OUTLIVES_THE_LIBRARIES
        {"raise-term-last", [] { raisesTermLast = true; }},
#endif
        {"alive", [] { tell("alive\n"); }},
        {"wait",
         [] {
             tell("waiting\n");
             for (;;)
                 pause();
         }},
    };
};

} // namespace

// All are the system's own, but for what a test asked for.
extern "C" {

CORVANE_EXPORT int sigaction(int signal, const struct sigaction* action, struct sigaction* previous) noexcept
{
    static const auto SYSTEMS = real<int (*)(int, const struct sigaction*, struct sigaction*)>("sigaction");
    if (tracesActions && action == nullptr)
        tell("query %s\n", nameOf(signal));
    const bool isHandler = action != nullptr && action->sa_handler != SIG_DFL && action->sa_handler != SIG_IGN;
    if (tracesActions && action != nullptr)
        tell("%s %s flags %d mask %s\n", isHandler ? "install" : "restore", nameOf(signal), action->sa_flags,
             sigisemptyset(&action->sa_mask) ? "empty" : "not empty");
    return SYSTEMS(signal, action, previous);
}

CORVANE_EXPORT int gettimeofday(timeval* __restrict time, void* __restrict) noexcept
{
    timespec now{};
    if (!clockStands)
        clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec + 1, static_cast<suseconds_t>(now.tv_nsec / 1000)};
    return 0;
}

#ifdef INTERRUPTS_LOCKS
CORVANE_EXPORT int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static const auto SYSTEMS = real<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    const int result = SYSTEMS(mutex);
    interrupt(mutex, true);
    return result;
}

CORVANE_EXPORT int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static const auto SYSTEMS = real<int (*)(pthread_mutex_t*)>("pthread_mutex_unlock");
    interrupt(mutex, false);
    return SYSTEMS(mutex);
}
#endif
}

int main(int argc, char** argv)
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    Script script(argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (!script.perform(argv[i])) {
            tell("unknown word: %s\n", argv[i]);
            return 98;
        }
    }
}
