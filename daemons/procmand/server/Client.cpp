#include "server/Client.h"

#include <algorithm>

namespace Procmand
{

namespace
{

using Phase = ManagedApplication::Phase;

bool isBeingStarted(const Registry::Applications::value_type& entry)
{
    return entry.second.phase == Phase::STARTING;
}

} // namespace

Client::Client(Box& box, const Caller& caller) : box(box), caller(caller)
{
    const auto& applications = box.registry.getAll();
    for (const auto& [uid, application] : applications)
        if (application.request && application.isAlive() && caller.isOf(*application.process))
            launched = &application;
    isStarting = launched == nullptr && std::any_of(applications.begin(), applications.end(), isBeingStarted) &&
                 caller.isOwnChild();
    const std::string name = launched == nullptr ? std::string() : launched->getName();
    rights = box.policy.findRights(caller, launched != nullptr || isStarting ? &name : nullptr);
}

bool Client::has(const ManagedApplication& application) const
{
    if (application.phase == Phase::STARTING)
        return isStarting;
    return application.isAlive() && caller.isOf(*application.process);
}

template <class Condition>
std::size_t Client::countWindowsWhere(Condition condition) const
{
    const auto& windows = box.windows.getWindows();
    return static_cast<std::size_t>(std::count_if(windows.begin(), windows.end(), [&](const WindowState& window) {
        const ManagedApplication* const owner = box.registry.find(window.uid);
        return owner != nullptr && condition(*owner);
    }));
}

std::size_t Client::countWindows() const
{
    return countWindowsWhere([this](const ManagedApplication& owner) { return has(owner); });
}

std::size_t Client::countWindowsOfUser() const
{
    return countWindowsWhere([this](const ManagedApplication& owner) {
        return owner.isAlive() && owner.process->belongsTo(caller.getUser());
    });
}

std::size_t Client::countRegistrations() const
{
    const auto& applications = box.registry.getAll();
    return static_cast<std::size_t>(std::count_if(applications.begin(), applications.end(), [this](const auto& entry) {
        return !entry.second.request && has(entry.second);
    }));
}

} // namespace Procmand
