#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Procmand
{

/// What a caller is to the process manager, and so what it may do.
enum class Role {
    NONE,
    APPLICATION, ///< registers itself, and has windows of its own
    VIEWER,      ///< reads, subscribes, and takes pictures
    MANAGER      ///< everything
};

/// @return "none", "application", "viewer" or "manager"
const char* nameOf(Role role);
std::optional<Role> findRole(std::string_view name);

/// What a role may do with a method.
enum class Extent {
    NOTHING,
    OWN, ///< only with the caller's own application and windows
    ALL
};

/// @param method  "IWindowCompositing::setOpacity"; subscribing counts as the method "rpc.subscribe"
/// @return what a role may do with it where no policy says something else. Managers may do everything.
Extent extentOf(Role role, std::string_view method);

/// @return the roles that may call a method, as words: "viewer or manager"
std::string rolesFor(std::string_view method);

} // namespace Procmand
