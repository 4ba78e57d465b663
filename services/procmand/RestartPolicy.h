#pragma once

#include "Settings.h"

#include <optional>
#include <string>

namespace Procmand
{

/// When an application that has ended by itself is started again.
enum class RestartMode { NEVER, ON_FAILURE, ALWAYS };

/// @return "never", "on-failure" or "always"
std::string nameOf(RestartMode mode);
std::optional<RestartMode> findRestartMode(const std::string& name);

/// @return whether an application in this mode is to be started again after such an end
bool isRestartWanted(RestartMode mode, bool failed);

/// @param restartsInRow  how many restarts this row has had already
/// @return how long to wait before the next one; none when the limit is reached
std::optional<Settings::Duration> findRestartDelay(unsigned int restartsInRow, const Settings& settings);

} // namespace Procmand
