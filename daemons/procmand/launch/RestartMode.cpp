#include "launch/RestartMode.h"

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

} // namespace Procmand
