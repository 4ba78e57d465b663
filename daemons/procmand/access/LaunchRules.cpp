#include "access/LaunchRules.h"

#include "launch/Users.h"

#include <algorithm>
#include <stdexcept>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// @return the user that the request is for
User findTarget(const LaunchRequest& request, const Caller& caller)
{
    // Without root no other user can be had, and root may have everything of the process manager's user.
    const bool isForOwn = geteuid() != 0 && caller.isTrusted();
    const auto user = request.user.empty() ? findUser(isForOwn ? geteuid() : caller.getUser()) : findUser(request.user);
    if (user)
        return *user;
    // A user that is in no list has a number all the same.
    if (request.user.empty() && caller.isTrusted())
        return User{.id = geteuid(), .group = getegid(), .name = {}, .home = {}, .shell = {}};
    throw std::runtime_error("there is no user " +
                             (request.user.empty() ? std::to_string(caller.getUser()) : request.user));
}

bool mayLaunchAs(const User& user, const Caller& caller, const Rights& rights)
{
    if (caller.isTrusted() || user.id == caller.getUser())
        return true;
    const auto has = [&rights](const std::string& name) {
        return std::find(rights.users.begin(), rights.users.end(), name) != rights.users.end();
    };
    return has(user.name) || (user.id != 0 && user.id != geteuid() && has("*"));
}

} // namespace

void settleUser(LaunchRequest& request, const Caller& caller, const Rights& rights, const Policy& policy)
{
    const User user = findTarget(request, caller);
    if (!mayLaunchAs(user, caller, rights))
        throw std::runtime_error("the policy does not let user " + std::to_string(caller.getUser()) +
                                 " launch anything as " + user.name);
    if (user.id != geteuid() && geteuid() != 0)
        throw std::runtime_error("the process manager does not run as root and can start nothing as " + user.name);
    if (user.id != caller.getUser())
        for (const auto& [name, value] : request.environment)
            if (!policy.mayPass(name))
                throw std::runtime_error("environment: " + name + " cannot be set for another user");
    request.user = user.id == geteuid() ? "" : user.name;
}

} // namespace Procmand
