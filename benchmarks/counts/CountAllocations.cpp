// To be loaded before a program (LD_PRELOAD): counts what it allocates, in a file that others may look at while it
// runs.
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" void* __libc_malloc(std::size_t);
extern "C" void* __libc_calloc(std::size_t, std::size_t);
extern "C" void* __libc_realloc(void*, std::size_t);
extern "C" void* __libc_memalign(std::size_t, std::size_t);

namespace
{

using Counter = std::atomic<unsigned long>;

Counter unseen; ///< counts until there is a file, and in a process without one

Counter* openFile()
{
    const char* const path = std::getenv("CORVANE_ALLOCATION_COUNT");
    const int file = path != nullptr ? open(path, O_RDWR | O_CLOEXEC) : -1;
    if (file < 0)
        return &unseen;
    void* const memory = mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return memory != MAP_FAILED ? static_cast<Counter*>(memory) : &unseen;
}

std::atomic<Counter*> counter{&unseen};
[[maybe_unused]] const bool isOpen = (counter = openFile(), true);

} // namespace

#define COUNTED extern "C" __attribute__((visibility("default")))

COUNTED void* malloc(std::size_t size)
{
    ++*counter;
    return __libc_malloc(size);
}

COUNTED void* calloc(std::size_t count, std::size_t size)
{
    ++*counter;
    return __libc_calloc(count, size);
}

COUNTED void* realloc(void* memory, std::size_t size)
{
    ++*counter;
    return __libc_realloc(memory, size);
}

COUNTED void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    ++*counter;
    return __libc_memalign(alignment, size);
}
