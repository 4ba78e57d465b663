#include "MemoryShortage.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

namespace Corvane::Test
{

namespace
{

std::atomic<unsigned long> firstFailing{ULONG_MAX};
std::atomic<unsigned long> lastFailing{ULONG_MAX};
std::atomic<unsigned long> asked{0};
thread_local int spared = 0;

bool isToFail()
{
    if (spared > 0 || firstFailing == ULONG_MAX)
        return false;
    const unsigned long number = asked++;
    return number >= firstFailing && number <= lastFailing;
}

} // namespace

MemoryShortage::Sparing::Sparing()
{
    ++spared;
}

MemoryShortage::Sparing::~Sparing()
{
    --spared;
}

MemoryShortage::MemoryShortage(Kind kind, unsigned long first)
{
    asked = 0;
    lastFailing = kind == ONCE ? first : ULONG_MAX;
    firstFailing = first;
}

MemoryShortage::~MemoryShortage()
{
    firstFailing = ULONG_MAX;
}

bool MemoryShortage::wasHit() const
{
    return asked > firstFailing;
}

} // namespace Corvane::Test

// A definition in the program comes before the one of the C++ library, for the libraries under test as well. All forms,
// because a sanitizer's forms do not call each other; out of line, because the compiler would otherwise take malloc and
// delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Corvane::Test::isToFail() ? nullptr : std::malloc(size);
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
