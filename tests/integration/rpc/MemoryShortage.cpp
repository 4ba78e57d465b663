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

// A definition in the program comes before the one of the C++ library, for the libraries under test as well.
void* operator new(std::size_t size)
{
    void* const memory = Corvane::Test::isToFail() ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
