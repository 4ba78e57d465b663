#include "MemoryShortage.h"

#include <allocation/ReplacedNew.h>
#include <atomic>
#include <climits>

namespace Corvane::Test
{

namespace
{

std::atomic<unsigned long> firstFailing{ULONG_MAX};
std::atomic<unsigned long> lastFailing{ULONG_MAX};
std::atomic<unsigned long> asked{0};
thread_local int spared = 0;

} // namespace

bool mayAllocate() noexcept
{
    if (spared > 0 || firstFailing == ULONG_MAX)
        return true;
    const unsigned long number = asked++;
    return number < firstFailing || number > lastFailing;
}

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
