#include "supervision/RestartPolicy.h"

#include <algorithm>

namespace Procmand
{

bool isRestartWanted(RestartMode mode, bool failed)
{
    return mode == RestartMode::ALWAYS || (mode == RestartMode::ON_FAILURE && failed);
}

std::optional<Settings::Duration> findRestartDelay(unsigned int restartsInRow, const Settings& settings)
{
    if (restartsInRow >= settings.restartLimit)
        return std::nullopt;
    Settings::Duration delay = settings.restartDelay;
    // Doubled step by step: a shift by the number of restarts would leave the range.
    for (unsigned int i = 0; i < restartsInRow && delay < settings.restartDelayLimit; ++i)
        delay *= 2;
    return std::min(delay, settings.restartDelayLimit);
}

} // namespace Procmand
