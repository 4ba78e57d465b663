#include "RestartPolicy.h"

#include <algorithm>

namespace Procmand
{

std::string nameOf(RestartMode mode)
{
    switch (mode) {
    case RestartMode::ON_FAILURE:
        return "on-failure";
    case RestartMode::ALWAYS:
        return "always";
    default:
        return "never";
    }
}

std::optional<RestartMode> findRestartMode(const std::string& name)
{
    for (const RestartMode mode : {RestartMode::NEVER, RestartMode::ON_FAILURE, RestartMode::ALWAYS})
        if (nameOf(mode) == name)
            return mode;
    return std::nullopt;
}

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
