#include "Box.h"

#include <algorithm>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <csignal>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>

namespace Corvane::Benchmark
{

namespace
{

/// How long anything may take; only what is broken ever takes that long.
constexpr std::chrono::seconds DEADLINE{20};

void endChild(pid_t pid)
{
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

} // namespace

Box::Box()
{
    manager.emplace(
        std::vector<std::string>{PROCMAND, "--compositor", "memory", "--state-folder", folder.getPath() + "/state"});
    const auto deadline = Clock::now() + DEADLINE;
    for (std::vector<std::string> servers; std::find(servers.begin(), servers.end(), "ORU") == servers.end();
         servers = RPCClient::listServers()) {
        if (Clock::now() > deadline)
            throw std::runtime_error("the process manager does not come up");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    client = std::make_unique<RPCClient>("ORU");
    client->subscribe({"*"}, [this](const std::string& name, const std::string& payload) { hear(name, payload); });
}

Box::~Box()
{
    client.reset();
    manager.reset(); // first, so that it starts nothing any more
    for (const auto& [uid, pid] : processes)
        endChild(pid);
}

std::string Box::launch()
{
    Serializer request;
    request.beginObject("");
    request.writeString("program", BOX_WINDOW);
    request.writeString("applicationType", "benchmark");
    request.endObject("");
    const std::string uid = call("IApplicationManager::launch", request.generate());
    return uid.substr(1, uid.size() - 2);
}

void Box::startBare(const std::string& uid)
{
    Process process(
        std::vector<std::string>{BOX_WINDOW, "--application-type=benchmark", "--authorization-token=" + uid});
    std::lock_guard guard(mutex);
    processes[uid] = process.release();
}

Clock::time_point Box::awaitKeepAlive(const std::string& uid)
{
    await("keep-alive", uid, keepAlives);
    std::lock_guard guard(mutex);
    return keepAlives[uid];
}

void Box::end(const std::string& uid)
{
    pid_t pid = 0;
    {
        std::lock_guard guard(mutex);
        pid = processes.at(uid);
    }
    endChild(pid); // waiting fails for the process manager's children, which it waits for itself
    await("end", uid, ends);
    std::lock_guard guard(mutex);
    processes.erase(uid);
}

long Box::countKeepAlives()
{
    std::lock_guard guard(mutex);
    return allKeepAlives;
}

std::string Box::call(const std::string& method, const std::string& parameters)
{
    return client->call(method, parameters);
}

double Box::timeCall(const std::string& method, const std::string& parameters)
{
    constexpr int TIMES = 200;
    return timeEach(TIMES, [&] { call(method, parameters); });
}

void Box::hear(const std::string& name, const std::string& payload)
{
    const auto now = Clock::now();
    const bool isLaunch = name == "IApplicationManager::onLaunch";
    if (!isLaunch && name != "IApplication::onKeepAlive" && name != "IApplicationManager::onEnd")
        return;
    Deserializer deserializer(payload);
    const std::string uid = deserializer.readString("uid");
    {
        std::lock_guard guard(mutex);
        allKeepAlives += name == "IApplication::onKeepAlive" ? 1 : 0;
        if (isLaunch)
            processes[uid] = deserialize<int>("pid", deserializer);
        else
            (name == "IApplication::onKeepAlive" ? keepAlives : ends).try_emplace(uid, now);
    }
    heard.notify_all();
}

void Box::await(const std::string& what, const std::string& uid, std::map<std::string, Clock::time_point>& seen)
{
    std::unique_lock lock(mutex);
    if (!heard.wait_for(lock, DEADLINE, [&] { return seen.contains(uid); }))
        throw std::runtime_error("no " + what + " of " + uid + " in time");
}

} // namespace Corvane::Benchmark
