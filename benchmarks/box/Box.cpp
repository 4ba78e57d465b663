#include "Box.h"

#include <algorithm>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Corvane::Benchmark
{

namespace
{

/// How long anything may take; only what is broken ever takes that long.
constexpr std::chrono::seconds DEADLINE{20};

/// Starts a program that prints into nothing.
pid_t start(const std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, stream);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

void endChild(pid_t pid)
{
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

} // namespace

Box::Box()
{
    char name[] = "/tmp/corvane-XXXXXX";
    if (mkdtemp(name) == nullptr)
        throw std::runtime_error("cannot create a folder");
    folder = name;
    setenv("CORVANE_RUNTIME_DIR", folder.c_str(), 1);
    setenv("CORVANE_DEBUG_LEVEL", "1", 1);
    manager = start({PROCMAND, "--compositor", "memory", "--state-folder", folder + "/state"});
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
    endChild(manager); // first, so that it starts nothing any more
    for (const auto& [uid, pid] : processes)
        endChild(pid);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string Box::launch()
{
    Serializer request;
    request.beginObject("");
    request.writeString("program", BOX_WINDOW);
    request.writeString("applicationType", "benchmark");
    request.endObject("");
    const std::string uid = client->call("IApplicationManager::launch", request.generate());
    return uid.substr(1, uid.size() - 2);
}

void Box::startBare(const std::string& uid)
{
    const pid_t pid = start({BOX_WINDOW, "--application-type=benchmark", "--authorization-token=" + uid});
    std::lock_guard guard(mutex);
    processes[uid] = pid;
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
