#include "ManagedApplication.h"

#include <stdexcept>

namespace Procmand
{

ManagedApplication& Registry::add(const std::string& uid)
{
    ManagedApplication& application = applications[uid];
    application.uid = uid;
    renew(application);
    return application;
}

void Registry::remove(const std::string& uid)
{
    applications.erase(uid);
}

ManagedApplication* Registry::find(const std::string& uid)
{
    const auto found = applications.find(uid);
    return found == applications.end() ? nullptr : &found->second;
}

ManagedApplication* Registry::find(const std::string& uid, unsigned long generation)
{
    ManagedApplication* const application = find(uid);
    return application != nullptr && application->generation == generation ? application : nullptr;
}

ManagedApplication& Registry::require(const std::string& uid)
{
    if (ManagedApplication* const application = find(uid))
        return *application;
    throw std::out_of_range("there is no application " + uid);
}

void Registry::renew(ManagedApplication& application)
{
    application.generation = ++lastGeneration;
}

} // namespace Procmand
