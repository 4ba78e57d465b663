#include "Names.h"

#include "Manager.h"
#include "Output.h"

#include <algorithm>
#include <map>

namespace Corvanectl
{
namespace
{

const std::string APPLICATION_PREFIX = "APP";

/// The names of the servers that live.
class Servers
{
public:
    bool has(const std::string& name) const { return std::find(names.begin(), names.end(), name) != names.end(); }
    bool hasApplication(const std::string& uid) const { return has(APPLICATION_PREFIX + uid); }
    std::vector<Identity> listApplications() const
    {
        std::vector<Identity> applications;
        for (const std::string& name : names)
            if (uidOf(name) != name)
                applications.push_back({uidOf(name), ""});
        return applications;
    }

private:
    const std::vector<std::string> names = Corvane::RPCClient::listServers();
};

std::vector<Identity> askManager(const Options& options)
{
    const JsonText answer(Manager(options).call("IApplicationManager::getApplications"));
    std::vector<Identity> applications;
    for (const simdjson::dom::element application : answer.root.get_array())
        applications.push_back({textOf(application, "uid"), textOf(application, "name")});
    return applications;
}

std::string findUid(const std::string& word, const Servers& servers, const Options& options)
{
    if (word.empty())
        throw UsageError("the uid is empty");
    // Whoever gives a whole uid need not wait for the process manager.
    if (servers.hasApplication(word))
        return word;
    if (servers.has(word))
        return uidOf(word);
    std::vector<Identity> applications = servers.listApplications();
    if (servers.has(MANAGER)) {
        const std::vector<Identity> managed = askManager(options);
        applications.insert(applications.end(), managed.begin(), managed.end());
    }
    return choose(word, applications).value_or(word);
}

} // namespace

std::optional<std::string> choose(const std::string& word, const std::vector<Identity>& applications)
{
    std::map<std::string, std::string> candidates; // names by uid; an application may be given twice
    const Identity* named = nullptr;
    for (const Identity& application : applications) {
        if (application.uid == word)
            return word;
        if (application.name == word)
            named = &application;
        if (application.uid.starts_with(word) || application.name.starts_with(word))
            candidates[application.uid] = application.name;
    }
    if (named != nullptr)
        return named->uid;
    if (candidates.size() < 2)
        return candidates.empty() ? std::nullopt : std::optional(candidates.begin()->first);
    std::string problem = "'" + word + "' may be any of";
    for (const auto& [uid, name] : candidates)
        problem += (uid == candidates.begin()->first ? " " : ", ") + uid + (name.empty() ? "" : " (" + name + ")");
    throw UsageError(problem);
}

std::string findUid(const std::string& word, const Options& options)
{
    return findUid(word, Servers(), options);
}

std::string findServerName(const std::string& word, const Options& options)
{
    const Servers servers;
    const std::string uid = findUid(word, servers, options);
    return servers.has(uid) && !servers.hasApplication(uid) ? uid : APPLICATION_PREFIX + uid;
}

std::string uidOf(const std::string& serverName)
{
    const bool isApplication = serverName.starts_with(APPLICATION_PREFIX) && serverName != APPLICATION_PREFIX;
    return isApplication ? serverName.substr(APPLICATION_PREFIX.size()) : serverName;
}

} // namespace Corvanectl
