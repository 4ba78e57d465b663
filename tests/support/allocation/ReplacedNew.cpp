#include "ReplacedNew.h"

#include <cstdlib>
#include <new>

// A definition in the program comes before the one of the C++ library, for the libraries under test as well. All forms,
// because a sanitizer's forms do not call each other; out of line, because the compiler would otherwise take malloc and
// delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Corvane::Test::mayAllocate() ? std::malloc(size) : nullptr;
}

[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (void* const memory = operator new(size, std::nothrow))
        return memory;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return operator new(size, std::nothrow);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
