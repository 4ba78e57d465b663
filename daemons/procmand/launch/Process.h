#pragma once

#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Procmand
{

/// How a process ended. Of one that is no child of the process manager neither is known.
struct ProcessEnd {
    std::optional<int> exitCode;
    std::optional<int> signal;

    /// An end that nobody saw counts as a failure.
    bool isFailure() const { return exitCode != 0; }
    /// @return "exit code 3", "SIGSEGV", or that nobody saw it
    std::string describe() const;
};

/// One process of this machine, and never another one that has got its id since. Not synchronised.
class Process
{
public:
    /// What a process uses of the machine.
    struct Usage {
        std::uint64_t processorMs = 0; ///< since its start
        std::uint64_t residentKb = 0;
    };

    /// Takes hold of a process by its id.
    /// @param isGroupLeader  whether signals go to its process group
    /// @return none when there is no such process
    static std::optional<Process> find(pid_t pid, bool isGroupLeader);
    /// The same by a descriptor of the process, which the system has given for this id.
    /// @return none when there is no descriptor
    static std::optional<Process> hold(pid_t pid, Corvane::FileDescriptor handle, bool isGroupLeader);

    pid_t getPid() const { return pid; }
    bool leadsGroup() const { return isGroupLeader; }
    /// @return whether it runs as this user now
    bool belongsTo(uid_t user) const;
    /// @return who has started it, 0 when that cannot be told
    pid_t findParent() const;
    /// @return the time of its start in the system's own unit since boot; with the pid it names the process for good
    const std::string& getStartTime() const { return startTime; }
    /// @return how long ago it started, whoever was watching then
    std::chrono::milliseconds getAge() const { return findAge(startTime); }
    /// @param startTime  of a process of the present boot. @return zero for what is no such time
    static std::chrono::milliseconds findAge(const std::string& startTime);
    /// @return a descriptor that can be read once the process has ended
    int getDescriptor() const { return handle.get(); }
    bool hasEnded() const;

    /// @return whether the system took the signal
    bool sendSignal(int signal) const;
    /// Takes note of the end of a process that has ended, so that the system can forget a child.
    ProcessEnd reap() const;
    /// @return none when it has ended
    std::optional<Usage> readUsage() const;
    /// @return the words of its command line, the program first
    std::vector<std::string> readCommand() const;

private:
    Process(pid_t pid, bool isGroupLeader, Corvane::FileDescriptor handle, std::string startTime);

    pid_t pid;
    bool isGroupLeader;
    Corvane::FileDescriptor handle;
    std::string startTime;
};

} // namespace Procmand
