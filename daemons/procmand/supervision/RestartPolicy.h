#pragma once

#include "box/Settings.h"
#include "launch/RestartMode.h"

#include <optional>

namespace Procmand
{

/// @return whether an application in this mode is to be started again after such an end
bool isRestartWanted(RestartMode mode, bool failed);

/// @param restartsInRow  how many restarts this row has had already
/// @return how long to wait before the next one; none when the limit is reached
std::optional<Settings::Duration> findRestartDelay(unsigned int restartsInRow, const Settings& settings);

} // namespace Procmand
