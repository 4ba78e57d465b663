#pragma once

namespace Procmand
{

/// The option that makes this program find out whether DirectFB starts, and end.
extern const char* const CHECK_OPTION;

/// Starts DirectFB in this process, says what came of it, and ends the process: DirectFB's own threads may fault once
/// it has failed.
[[noreturn]] void checkDirectFB();

/// Lets a process of its own find out whether DirectFB starts, so that this one does not die of it.
/// @throws std::runtime_error  it does not. Waits, some seconds at most.
void requireDirectFB();

} // namespace Procmand
