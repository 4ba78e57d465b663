#include "BrokenHeap.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

// The C library's own entrance to its heap; not declared in a header.
extern "C" void* __libc_malloc(std::size_t size);

namespace
{

thread_local int signalInsideMalloc = 0;
thread_local bool heapIsLocked = false;

} // namespace

extern "C" void* malloc(std::size_t size)
{
    if (heapIsLocked) {
        for (;;)
            pause();
    }
    if (signalInsideMalloc != 0) {
        heapIsLocked = true;
        raise(signalInsideMalloc);
    }
    return __libc_malloc(size);
}

namespace Corvane::Test
{

void raiseInsideMalloc(int signal)
{
    // The library's own threads hold SIGTERM off; the application's, for which this one stands, do not.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    signalInsideMalloc = signal;
    // Volatile, or the compiler leaves out an allocation that nobody uses.
    void* volatile memory = std::malloc(1);
    std::free(memory);
}

} // namespace Corvane::Test
