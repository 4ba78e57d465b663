#pragma once

#include <optional>
#include <string>

namespace Procmand
{

/// When an application that has ended by itself is started again.
enum class RestartMode { NEVER, ON_FAILURE, ALWAYS };

/// @return "never", "on-failure" or "always"
std::string nameOf(RestartMode mode);
/// @return the mode of this name; none where there is no such mode
std::optional<RestartMode> findRestartMode(const std::string& name);

} // namespace Procmand
