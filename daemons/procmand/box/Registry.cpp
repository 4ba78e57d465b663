#include "box/ManagedApplication.h"

#include <stdexcept>

namespace Procmand
{

void ManagedApplication::writeIdentity(Corvane::Serializer& serializer) const
{
    serializer.writeString("name", getName());
    serializer.writeString("applicationType", type);
    serializer.writeString("program", program);
}

std::string ManagedApplication::describe() const
{
    std::string line;
    for (const std::string& word : {getName(), type, program.substr(program.rfind('/') + 1)})
        if (!word.empty())
            line += (line.empty() ? "" : ", ") + word;
    return line;
}

bool ManagedApplication::isFailure() const
{
    if (ranAway)
        return true;
    // Of an end that nobody saw, the last state is all that is known.
    if (!end->exitCode && !end->signal)
        return state != Corvane::ILifecycleManagement::STATE_TERMINATED;
    return end->isFailure();
}

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

ManagedApplication* Registry::findHolder(const std::string& word)
{
    for (auto& [uid, application] : applications)
        if (!word.empty() && (word == uid || word == application.getName()))
            return &application;
    return nullptr;
}

void Registry::renew(ManagedApplication& application)
{
    application.generation = ++lastGeneration;
}

} // namespace Procmand
