#pragma once

#include "access/Policy.h"
#include "launch/LaunchRequest.h"

namespace Procmand
{

/// Decides as whom a launch runs: as the user that it names, else as the one who asks. Sets `user` of the request, and
/// leaves it empty for the process manager's own user.
/// @throws std::runtime_error  the caller may not launch as that user, or not with these variables, or there is none
void settleUser(LaunchRequest& request, const Caller& caller, const Rights& rights, const Policy& policy);

} // namespace Procmand
