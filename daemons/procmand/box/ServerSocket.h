#pragma once

#include "launch/Process.h"

#include <optional>
#include <string>
#include <sys/types.h>

/// The sockets of control servers, looked at from outside.
namespace Procmand
{

/// @return the name of an application's control server
std::string serverNameOf(const std::string& uid);

/// @return the path of the socket that belongs to a server's name
std::string findSocketPath(const std::string& serverName);

/// @return the process that serves under this name; none when nobody does, or when its id has passed on to a process of
///         another user
std::optional<Process> findServer(const std::string& serverName);

/// Removes the socket of this name if no server is behind it any more. Does not wait.
/// @return false when a name is changing hands just now, so that nothing can be said; it is over in a moment
bool removeDeadSocket(const std::string& serverName);

} // namespace Procmand
