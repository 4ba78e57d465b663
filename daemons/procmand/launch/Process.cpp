#include "launch/Process.h"

#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Procmand
{

namespace
{

std::string folderOf(pid_t pid)
{
    return "/proc/" + std::to_string(pid);
}

/// The fields of /proc/PID/stat from the third one on; the second, the name, may contain anything.
std::vector<std::string> readFields(pid_t pid)
{
    std::ifstream file(folderOf(pid) + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    const std::size_t end = text.rfind(')');
    std::istringstream rest(end == text.npos ? "" : text.substr(end + 1));
    std::vector<std::string> fields;
    for (std::string field; rest >> field;)
        fields.push_back(field);
    return fields;
}

/// Positions in what `readFields` returns.
enum Field : std::size_t {
    STATE = 0,
    PARENT = 1,
    USER_TICKS = 11,
    SYSTEM_TICKS = 12,
    START_TIME = 19,
    RESIDENT_PAGES = 21
};

} // namespace

std::string ProcessEnd::describe() const
{
    if (exitCode)
        return "exit code " + std::to_string(*exitCode);
    if (!signal)
        return "nobody saw how";
    const char* const name = sigabbrev_np(*signal);
    return name == nullptr ? "signal " + std::to_string(*signal) : std::string("SIG") + name;
}

Process::Process(pid_t pid, bool isGroupLeader, Corvane::FileDescriptor handle, std::string startTime)
    : pid(pid), isGroupLeader(isGroupLeader), handle(std::move(handle)), startTime(std::move(startTime))
{
}

std::optional<Process> Process::find(pid_t pid, bool isGroupLeader)
{
    if (pid <= 0)
        return std::nullopt;
    return hold(pid, Corvane::FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))), isGroupLeader);
}

std::optional<Process> Process::hold(pid_t pid, Corvane::FileDescriptor handle, bool isGroupLeader)
{
    if (!handle.isOpen())
        return std::nullopt;
    const std::vector<std::string> fields = readFields(pid);
    return Process(pid, isGroupLeader, std::move(handle), fields.size() > START_TIME ? fields[START_TIME] : "");
}

bool Process::belongsTo(uid_t user) const
{
    struct stat status {
    };
    return stat(folderOf(pid).c_str(), &status) == 0 && status.st_uid == user && !hasEnded();
}

pid_t Process::findParent() const
{
    const std::vector<std::string> fields = readFields(pid);
    return fields.size() <= PARENT || hasEnded() ? 0 : static_cast<pid_t>(std::stol(fields[PARENT]));
}

std::chrono::milliseconds Process::findAge(const std::string& startTime)
{
    const auto ticksPerSecond = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    std::uint64_t ticks = 0;
    if (std::from_chars(startTime.data(), startTime.data() + startTime.size(), ticks).ec != std::errc())
        return std::chrono::milliseconds::zero();
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now); // the clock of start times: it goes on while the box sleeps
    const std::chrono::milliseconds start(ticks / ticksPerSecond * 1000 +
                                          ticks % ticksPerSecond * 1000 / ticksPerSecond);
    return std::chrono::seconds(now.tv_sec) + std::chrono::milliseconds(now.tv_nsec / 1000000) - start;
}

bool Process::hasEnded() const
{
    pollfd wait{.fd = handle.get(), .events = POLLIN, .revents = 0};
    return poll(&wait, 1, 0) > 0;
}

bool Process::sendSignal(int signal) const
{
    // The group has its leader's id, which nobody else can get as long as the leader is there.
    if (isGroupLeader && !hasEnded())
        return kill(-pid, signal) == 0;
    return syscall(SYS_pidfd_send_signal, handle.get(), signal, nullptr, 0) == 0;
}

ProcessEnd Process::reap() const
{
    siginfo_t info{};
    if (waitid(P_PIDFD, static_cast<id_t>(handle.get()), &info, WEXITED | WNOHANG) != 0 || info.si_pid == 0)
        return {};
    if (info.si_code == CLD_EXITED)
        return {.exitCode = info.si_status, .signal = {}};
    return {.exitCode = {}, .signal = info.si_status};
}

std::optional<Process::Usage> Process::readUsage() const
{
    const std::vector<std::string> fields = readFields(pid);
    if (fields.size() <= RESIDENT_PAGES || fields[START_TIME] != startTime || fields[STATE] == "Z")
        return std::nullopt;
    const auto number = [&fields](Field field) { return std::stoull(fields[field]); };
    const auto ticksPerSecond = static_cast<unsigned long long>(sysconf(_SC_CLK_TCK));
    const auto pageKb = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE)) / 1024;
    return Usage{.processorMs = (number(USER_TICKS) + number(SYSTEM_TICKS)) * 1000 / ticksPerSecond,
                 .residentKb = number(RESIDENT_PAGES) * pageKb};
}

std::vector<std::string> Process::readCommand() const
{
    std::ifstream file(folderOf(pid) + "/cmdline");
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');)
        words.push_back(word);
    return words;
}

} // namespace Procmand
