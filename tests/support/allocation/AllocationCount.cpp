#include "AllocationCount.h"

#include "ReplacedNew.h"

namespace Corvane::Test
{

namespace
{

thread_local unsigned long allocations = 0;

} // namespace

unsigned long countAllocations()
{
    return allocations;
}

bool mayAllocate() noexcept
{
    ++allocations;
    return true;
}

} // namespace Corvane::Test
