#pragma once

#include "launch/Process.h"

#include <corvane/common/RPCCaller.h>
#include <optional>
#include <string>
#include <sys/types.h>

namespace Procmand
{

/// Who makes a call to the process manager, as the system knows it. Only while the call is handled.
class Caller
{
public:
    /// @return the caller of the call that this thread handles; the process manager itself for one from within
    static Caller getCurrent();

    pid_t getPid() const { return pid; }
    uid_t getUser() const { return user; }
    /// @return whether the caller is root or the process manager's own user, who can do with it what they want anyway
    bool isTrusted() const;
    bool isMemberOf(gid_t group) const;
    /// Takes hold of the caller's process. @return none when it has ended
    std::optional<Process> findProcess() const;
    /// @return whether the process is the caller's. A launched application is its whole process group, so that a script
    ///         may start it.
    bool isOf(const Process& process) const;
    /// @return whether the process manager itself has started the caller, or the leader of its process group
    bool isOwnChild() const;
    /// @return the file that the caller's process runs, empty where that cannot be told
    std::string findProgram() const;

private:
    explicit Caller(Corvane::RPCCaller* peer);

    Corvane::RPCCaller* peer; ///< null for a call from within
    pid_t pid;
    pid_t processGroup;
    uid_t user;
};

} // namespace Procmand
