#include "launch/Remains.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Procmand
{

namespace
{

constexpr std::chrono::seconds PATIENCE{1};
constexpr std::chrono::milliseconds PAUSE{10};

/// @return where the file system of cgroups is, empty where there is none
std::string findMountPoint()
{
    std::ifstream mounts("/proc/self/mounts");
    std::string device, folder, type;
    for (std::string rest; mounts >> device >> folder >> type && std::getline(mounts, rest);)
        if (type == "cgroup2")
            return folder;
    return {};
}

/// @return the folder of the cgroup that this process is in, empty where it is in none
std::string findOwnGroup()
{
    const std::string mountPoint = findMountPoint();
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; !mountPoint.empty() && std::getline(groups, line);)
        if (line.starts_with("0::"))
            return mountPoint + line.substr(3);
    return {};
}

/// @return the folder of the run's cgroup, whether or not it is there; empty where there are no cgroups
std::string groupOf(const std::string& mark)
{
    static const std::string own = findOwnGroup();
    return own.empty() ? own : own + "/corvane-" + mark;
}

bool writeInto(const std::string& path, const std::string& text)
{
    const Corvane::FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return file.isOpen() && write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

/// What a system does that has cgroup.kill.
void killMembers(const std::string& group)
{
    std::ifstream members(group + "/cgroup.procs");
    for (pid_t pid = 0; members >> pid;)
        if (pid > 1)
            kill(pid, SIGKILL);
}

/// @return whether the cgroup is gone
bool killGroup(const std::string& group)
{
    if (!writeInto(group + "/cgroup.kill", "1"))
        killMembers(group);
    return rmdir(group.c_str()) == 0 || errno == ENOENT;
}

bool isMarked(const std::filesystem::path& process, const std::string& variable)
{
    std::ifstream file(process / "environ");
    const std::string environment{std::istreambuf_iterator<char>(file), {}};
    return ('\0' + environment).find('\0' + variable + '\0') != environment.npos;
}

/// @return whether there was nothing to kill
bool killMarked(const std::string& mark)
{
    const std::string variable = std::string(MARK_VARIABLE) + "=" + mark;
    bool found = false;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t pid = 0;
        std::from_chars(name.data(), name.data() + name.size(), pid);
        if (pid > 1 && pid != getpid() && isMarked(entry.path(), variable) && kill(pid, SIGKILL) == 0)
            found = true;
    }
    return !found;
}

} // namespace

void enclose(const std::string& mark, pid_t pid)
{
    const std::string group = groupOf(mark);
    if (group.empty() || mkdir(group.c_str(), 0755) != 0)
        return;
    if (!writeInto(group + "/cgroup.procs", std::to_string(pid)))
        rmdir(group.c_str());
}

void killRemains(const std::string& mark)
{
    if (mark.empty() || mark.find_first_not_of("0123456789abcdef") != mark.npos)
        return; // no mark that was made here, and maybe a way to another cgroup
    const std::string group = groupOf(mark);
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    // Again and again: what is killed may just have started something else, and takes a moment to go.
    while (!(group.empty() || access(group.c_str(), F_OK) != 0 ? killMarked(mark) : killGroup(group)) &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(PAUSE);
}

} // namespace Procmand
