#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program, so that the fuzzer keeps the input, when a rule does not hold.
inline void require(bool condition, const char* rule)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}
