#pragma once

namespace Corvane::Test
{

/// How often this thread has asked for memory with operator new, anywhere in the process's libraries.
unsigned long countAllocations();

} // namespace Corvane::Test
