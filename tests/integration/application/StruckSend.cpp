#include "StruckSend.h"

#include <corvane/foundation/Export.h>
#include <cstdlib>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace
{

thread_local int signalInSend = 0;
thread_local int faultInSend = 0;

void strike()
{
    if (const int signal = std::exchange(signalInSend, 0))
        raise(signal);
    if (const int signal = std::exchange(faultInSend, 0))
        Corvane::Test::fault(signal);
}

} // namespace

// Both are the system's own, but for the signal in the middle of them.
extern "C" {

CORVANE_EXPORT ssize_t send(int socket, const void* data, std::size_t size, int flags)
{
    strike();
    return sendto(socket, data, size, flags, nullptr, 0);
}

CORVANE_EXPORT ssize_t sendmsg(int socket, const msghdr* message, int flags)
{
    strike();
    return syscall(SYS_sendmsg, socket, message, flags);
}
}

namespace Corvane::Test
{

void strikeNextSend(int signal)
{
    signalInSend = signal;
}

void faultInNextSend(int signal)
{
    faultInSend = signal;
}

void fault(int signal)
{
    if (signal == SIGSEGV) {
        // A page that nobody may write. A null pointer would do, but a sanitizer sees that one coming.
        void* page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        *static_cast<volatile char*>(page) = 1;
    }
    if (signal == SIGBUS) {
        const int emptyFile = memfd_create("empty", MFD_CLOEXEC);
        void* page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, emptyFile, 0);
        *static_cast<volatile char*>(page) = 1;
    }
    if (signal == SIGILL)
        __builtin_trap();
    if (signal == SIGABRT)
        std::abort();
}

} // namespace Corvane::Test
