#pragma once

/// The process's nice value as this program's own setpriority() and getpriority() keep it, so that tests need no
/// privileges. Each change is written into the journal.
namespace Corvane::Test
{

struct FakePriority {
    int value = 0;
    int failure = 0; ///< the error of the next calls of setpriority(), 0 for none
};

inline FakePriority priority;

} // namespace Corvane::Test
