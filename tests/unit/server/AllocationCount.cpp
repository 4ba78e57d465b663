#include "AllocationCount.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local unsigned long allocations = 0;

} // namespace

unsigned long Corvane::Test::countAllocations()
{
    return allocations;
}

// A definition in the program comes before the one of the C++ library, for the libraries under test as well.
void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
