#include "access/Role.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Procmand
{

namespace
{

constexpr std::array<std::pair<Role, const char*>, 4> ROLE_NAMES{
    {{Role::NONE, "none"}, {Role::APPLICATION, "application"}, {Role::VIEWER, "viewer"}, {Role::MANAGER, "manager"}}};

struct MethodRow {
    std::string_view method;
    Extent application;
    Extent viewer;
};

/// What is not in the table is for managers alone.
constexpr MethodRow RIGHTS[] = {
    {"IApplicationManager::registerApplication", Extent::OWN, Extent::NOTHING},
    {"IApplicationManager::getApplications", Extent::NOTHING, Extent::ALL},
    {"IApplicationManager::getHistory", Extent::NOTHING, Extent::ALL},
    {"IResourceAcquisition::getResource", Extent::OWN, Extent::NOTHING},
    {"IResourceAcquisition::releaseResource", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::setVisibility", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::getVisibility", Extent::OWN, Extent::ALL},
    {"IWindowCompositing::setOpacity", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::getOpacity", Extent::OWN, Extent::ALL},
    {"IWindowCompositing::setZOrder", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::getZOrder", Extent::OWN, Extent::ALL},
    {"IWindowCompositing::setLocation", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::getLocation", Extent::OWN, Extent::ALL},
    {"IWindowCompositing::bringToFront", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::sendToBack", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::bringForward", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::sendBackward", Extent::OWN, Extent::NOTHING},
    {"IWindowCompositing::getWindows", Extent::NOTHING, Extent::ALL},
    {"IWindowCompositing::screenshot", Extent::NOTHING, Extent::ALL},
    {"rpc.subscribe", Extent::NOTHING, Extent::ALL},
};

} // namespace

const char* nameOf(Role role)
{
    return ROLE_NAMES[static_cast<std::size_t>(role)].second;
}

std::optional<Role> findRole(std::string_view name)
{
    const auto* const found =
        std::find_if(ROLE_NAMES.begin(), ROLE_NAMES.end(), [name](const auto& entry) { return entry.second == name; });
    return found == ROLE_NAMES.end() ? std::nullopt : std::optional(found->first);
}

Extent extentOf(Role role, std::string_view method)
{
    if (role == Role::MANAGER)
        return Extent::ALL;
    const auto* const row = std::find_if(std::begin(RIGHTS), std::end(RIGHTS),
                                         [method](const MethodRow& entry) { return entry.method == method; });
    if (row == std::end(RIGHTS) || role == Role::NONE)
        return Extent::NOTHING;
    return role == Role::APPLICATION ? row->application : row->viewer;
}

std::string rolesFor(std::string_view method)
{
    std::string words;
    for (const Role role : {Role::APPLICATION, Role::VIEWER})
        if (extentOf(role, method) != Extent::NOTHING)
            words += std::string(nameOf(role)) + " or ";
    return words + nameOf(Role::MANAGER);
}

} // namespace Procmand
