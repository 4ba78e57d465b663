#include "ProcmandFixture.h"

#include <algorithm>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Serializer.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <support/TaskState.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

bool containsAll(const std::string& text, const std::vector<std::string>& parts)
{
    return std::all_of(parts.begin(), parts.end(),
                       [&text](const std::string& part) { return text.find(part) != text.npos; });
}

/// Kills the processes that were started with this runtime folder: not every launch has been heard of.
/// @return whether there were any
bool killThoseIn(const std::string& runtimeFolder)
{
    bool found = false;
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        const pid_t pid = std::atoi(process.path().filename().c_str());
        std::ifstream environment(process.path() / "environ");
        for (std::string variable; pid != 0 && pid != getpid() && std::getline(environment, variable, '\0');)
            if (variable == "CORVANE_RUNTIME_DIR=" + runtimeFolder && kill(pid, SIGKILL) == 0)
                found = true;
    }
    return found;
}

std::map<std::string, std::string> readMembers(const nlohmann::json& object)
{
    std::map<std::string, std::string> members;
    for (const auto& [name, value] : object.items())
        if (value.is_string())
            members[name] = value.get<std::string>();
        else if (value.is_number() || value.is_boolean())
            members[name] = value.dump();
    return members;
}

} // namespace

void Announcements::add(std::string announcement)
{
    std::lock_guard guard(mutex);
    all.push_back(std::move(announcement));
}

std::string Announcements::take(const std::vector<std::string>& texts)
{
    std::string found;
    await([&] {
        std::lock_guard guard(mutex);
        for (std::size_t i = taken; i < all.size() && found.empty(); ++i)
            if (containsAll(all[i], texts)) {
                found = all[i];
                taken = i + 1;
            }
        return !found.empty();
    });
    return found;
}

std::vector<std::string> Announcements::getAll()
{
    std::lock_guard guard(mutex);
    return all;
}

std::size_t Announcements::count(const std::vector<std::string>& texts)
{
    const std::vector<std::string> now = getAll();
    return static_cast<std::size_t>(std::count_if(now.begin(), now.end(), [&texts](const std::string& announcement) {
        return containsAll(announcement, texts);
    }));
}

WithProcmand::~WithProcmand()
{
    client.reset();
    procmand.reset();
    // One that is killed may just have started another process.
    while (killThoseIn(std::getenv("CORVANE_RUNTIME_DIR")))
        ;
}

void WithProcmand::startProcmand(const Words& options)
{
    Words command{
        CORVANE_PROCMAND, "--state-folder", state.getPath(), "--call-deadline", "1", "--terminate-deadline", "5",
        "--compositor",   "memory"};
    command.insert(command.end(), options.begin(), options.end());
    procmand = std::make_unique<ChildProcess>(command, leavingSignalsToTheProgram());
    const auto serves = [] {
        const auto servers = RPCClient::listServers();
        return std::count(servers.begin(), servers.end(), "ORU") == 1;
    };
    // Thrown, not asserted: an assertion would let the test go on with nobody to talk to.
    if (!await(serves))
        throw std::runtime_error("corvane-procmand does not serve: " + procmand->getError());
    client = std::make_unique<RPCClient>("ORU");
    client->subscribe({"*"}, [this](const std::string& name, const std::string& payload) {
        announcements.add(name + " " + payload);
    });
}

void WithProcmand::killProcmand()
{
    // What it has announced it has also written, once it answers.
    call("IApplicationManager::getApplications");
    procmand->sendSignal(SIGKILL);
    EXPECT_EQ(procmand->wait().signal, SIGKILL);
    client.reset();
}

int WithProcmand::endProcmand()
{
    procmand->sendSignal(SIGTERM);
    const int status = procmand->wait().status.value_or(-1);
    client.reset();
    return status;
}

std::string WithProcmand::call(const std::string& method, const std::string& parameters)
{
    return client->call(method, parameters);
}

std::string WithProcmand::refusalOf(const std::string& method, const std::string& parameters)
{
    try {
        return "it is not refused: " + call(method, parameters);
    } catch (const RPCError& error) {
        return error.what();
    }
}

std::string WithProcmand::launch(const std::string& program, const Words& arguments, const std::string& more)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("program", program);
    serializer.beginArray("arguments");
    for (const std::string& argument : arguments)
        serializer.writeString("", argument);
    serializer.endArray("arguments");
    serializer.endObject("");
    std::string request = serializer.generate();
    if (!more.empty())
        request.replace(request.size() - 1, 1, "," + more + "}");
    const std::string result = call("IApplicationManager::launch", request);
    const std::string uid = result.substr(1, result.size() - 2);
    EXPECT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "") << request;
    return uid;
}

std::string WithProcmand::launchShell(const std::string& command, const std::string& more)
{
    return launch("/bin/sh", {"-c", command}, more);
}

std::string WithProcmand::launchVictim(const std::string& parameters, const std::string& more)
{
    const std::string uid = launch(PROCMAND_VICTIM, {},
                                   R"("applicationType":"test","applicationParameters":")" + parameters + "\"" +
                                       (more.empty() ? "" : ",") + more);
    EXPECT_TRUE(awaitMember(uid, "state", "RUNNING"));
    return uid;
}

std::string WithProcmand::launchQuietVictim(const std::string& more)
{
    return launch(PROCMAND_VICTIM, {}, R"("applicationType":"test","applicationParameters":"quiet")" + more);
}

std::map<std::string, std::string> WithProcmand::find(const std::string& uid)
{
    for (const nlohmann::json& application : nlohmann::json::parse(call("IApplicationManager::getApplications")))
        if (application["uid"] == uid)
            return readMembers(application);
    return {};
}

bool WithProcmand::awaitMember(const std::string& uid, const std::string& member, const std::string& value)
{
    return await([&] { return find(uid)[member] == value; });
}

pid_t WithProcmand::pidOf(const std::string& uid)
{
    const std::string pid = find(uid)["pid"];
    if (pid.empty())
        throw std::runtime_error("the application " + uid + " does not run");
    return std::stoi(pid);
}

bool WithProcmand::hasSocket(const std::string& uid) const
{
    return std::filesystem::exists(runtime.directory.getPath() + "/APP" + uid + ".sock");
}

void WithProcmand::killAtRest(const std::string& uid, int signal)
{
    const pid_t pid = pidOf(uid);
    ASSERT_TRUE(await([pid] { return readTaskState("/proc/" + std::to_string(pid)) == 'S'; }));
    kill(pid, signal);
}

void WithProcmand::freeze(const std::string& uid)
{
    const pid_t pid = pidOf(uid);
    kill(pid, SIGSTOP);
    ASSERT_TRUE(await([pid] {
        for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task"))
            if (readTaskState(task.path()) != 'T')
                return false;
        return true;
    }));
}

std::string write(std::initializer_list<std::pair<std::string, std::string>> members)
{
    Serializer serializer;
    serializer.beginObject("");
    for (const auto& [name, value] : members)
        serializer.writeString(name, value);
    serializer.endObject("");
    return serializer.generate();
}

std::map<std::string, std::string> readMembers(const std::string& json)
{
    return readMembers(nlohmann::json::parse(json));
}

} // namespace Corvane::Test
