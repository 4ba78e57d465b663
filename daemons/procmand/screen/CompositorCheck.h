#pragma once

#include <chrono>

namespace Procmand
{

/// The option that makes this program find out whether DirectFB starts, and end.
extern const char* const CHECK_OPTION;

/// How long DirectFB may take to start and to stop.
constexpr std::chrono::milliseconds CHECK_DEADLINE{10000};

/// Starts DirectFB in a child of this process, for its own threads may fault once it has failed; says what came of it,
/// and ends this process, with 0 where DirectFB starts and 1 where it does not. This process must have one thread only.
[[noreturn]] void checkDirectFB(std::chrono::milliseconds deadline = CHECK_DEADLINE);

/// Lets a process of its own find out whether DirectFB starts, so that this one does not die of it.
/// @throws std::runtime_error  it does not. Waits, some seconds at most.
void requireDirectFB();

} // namespace Procmand
