// A window application that dies in the way that its command line tells, once it reads a byte from descriptor 3, to
// which it has written one when it is ready.
//
//     crash-victim PLACE SIGNAL STATE --application-type=TYPE --authorization-token=UID
#include <corvane/APPRPCServer.h>
#include <corvane/Window.h>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "BrokenHeap.h"

namespace
{

using namespace Corvane;

constexpr int COMMANDS = 3;

/// The signal that the transport's next recv() raises; 0 for none.
volatile int signalInTransport = 0;

/// Makes a fault that ends in the signal, where there is one.
void raiseByFault(int signal)
{
    const auto newPage = [](int protection, int flags, int file) {
        return static_cast<volatile char*>(mmap(nullptr, 1, protection, flags, file, 0));
    };
    volatile int one = 1;
    volatile int zero = 0;
    switch (signal) {
    case SIGSEGV:
        *newPage(PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1) = 1;
        break;
    case SIGBUS:
        *newPage(PROT_READ | PROT_WRITE, MAP_SHARED, memfd_create("empty", MFD_CLOEXEC)) = 1;
        break;
    case SIGILL:
        __builtin_trap();
    case SIGABRT:
        std::abort();
    case SIGFPE:
        one = one / zero;
        break; // does not trap on every processor
    default:
        break;
    }
    raise(signal);
}

// Each level has a buffer of its own, and something to do behind the next one.
int overflowStack(volatile char* above)
{
    volatile char buffer[4096];
    buffer[0] = *above;
    if (buffer[0] != 0) // it never is, which the compiler does not know
        return 1;
    return overflowStack(buffer) + buffer[0];
}

class CrashWindow : public Window
{
public:
    CrashWindow(int argc, char** argv)
        : Window(argc, argv), place(argv[1]), signal(std::atoi(argv[2])), wantedState(argv[3])
    {
    }
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "crash"; }
    using Window::handleEvent;
    bool handleEvent(const Event&) override
    {
        if (place == "overflow-handler")
            overflow();
        else
            raiseByFault(signal);
        return true;
    }

    void run() override
    {
        setState(wantedState);
        if (place == "listener")
            addListener(&listener);
        char byte = 'r';
        if (write(COMMANDS, &byte, 1) != 1 || read(COMMANDS, &byte, 1) != 1)
            return;
        if (place == "transport") {
            signalInTransport = signal;
            if (write(COMMANDS, &byte, 1) != 1)
                return;
        }
        die();
        for (;;)
            pause();
    }

private:
    struct FaultyListener : IApplication::IApplicationListener {
        explicit FaultyListener(int signal) : signal(signal) {}
        void onKeepAlive(const std::string&, const std::string&) override {}
        void onStateChange(const std::string&, const std::string&, const std::string& newState) override
        {
            if (newState != STATE_ABORTED)
                raiseByFault(signal);
        }
        const int signal;
    };

    static void overflow()
    {
        volatile char bottom = 0;
        overflowStack(&bottom);
    }

    void die()
    {
        if (place == "main")
            raiseByFault(signal);
        else if (place == "thread")
            std::thread([this] { raiseByFault(signal); }).join();
        else if (place == "listener")
            setState(STATE_SUSPENDING);
        else if (place == "malloc")
            Test::raiseInsideMalloc(signal);
        else if (place == "overflow-main")
            overflow();
    }

    const std::string place;
    const int signal;
    const std::string wantedState;
    FaultyListener listener{signal};
};

} // namespace

/// The system's own, in which the transport dies where that is asked for.
extern "C" CORVANE_EXPORT ssize_t recv(int socket, void* buffer, std::size_t size, int flags)
{
    static const auto SYSTEMS = reinterpret_cast<ssize_t (*)(int, void*, std::size_t, int)>(dlsym(RTLD_NEXT, "recv"));
    if (signalInTransport != 0)
        raiseByFault(signalInTransport);
    return SYSTEMS(socket, buffer, size, flags);
}

int main(int argc, char** argv)
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    CrashWindow window(argc, argv);
    APPRPCServer server(&window);
    server.init();
    window.init();
    window.run();
}
