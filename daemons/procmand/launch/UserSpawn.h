#pragma once

#include "launch/Users.h"

namespace Procmand
{

/// What a new process begins with. The pointers belong to the caller.
struct SpawnPlan {
    const char* program; ///< a path, or a name that is looked for in PATH
    char* const* arguments;
    char* const* environment;
    int folder; ///< descriptor of its working directory
    int output;
    int error;
};

/// Starts a program as another user, with that user's groups and nothing of root's, as the leader of a process group.
/// The system's own function for starting programs cannot change the user. Needs root. Waits until the program runs;
/// thread-safe.
/// @return 0, or the error number; the process id is set where it is 0
int spawnAs(const User& user, const SpawnPlan& plan, pid_t& pid);

} // namespace Procmand
