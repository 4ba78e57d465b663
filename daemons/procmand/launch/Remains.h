#pragma once

#include <string>
#include <sys/types.h>

/// What a run of an application has started, and what is still there of it when its process has ended: also what has
/// made a session of its own and ignores SIGTERM.
///
/// Where this process may make cgroups (version 2), each run has one, which nothing leaves by itself. Elsewhere what
/// belongs to a run is known by the mark of the run, which it inherits in its environment; what changes its environment
/// is not found. Thread-safe.
namespace Procmand
{

/// The variable that holds the mark, a text that nobody can guess.
constexpr char MARK_VARIABLE[] = "CORVANE_LAUNCH_MARK";

/// Puts a process that waits for its program into a cgroup for this run, where that is possible.
void enclose(const std::string& mark, pid_t pid);

/// Kills what is left of the run, and removes its cgroup. Waits, a second at most.
void killRemains(const std::string& mark);

} // namespace Procmand
