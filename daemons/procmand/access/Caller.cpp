#include "access/Caller.h"

#include <filesystem>
#include <unistd.h>

namespace Procmand
{

using Corvane::RPCCaller;

Caller::Caller(RPCCaller* peer)
    : peer(peer),
      pid(peer == nullptr ? getpid() : peer->getPid()),
      processGroup(getpgid(pid)),
      user(peer == nullptr ? geteuid() : peer->getUser())
{
}

Caller Caller::getCurrent()
{
    return Caller(RPCCaller::getCurrent());
}

bool Caller::isTrusted() const
{
    return user == 0 || user == geteuid();
}

bool Caller::isMemberOf(gid_t group) const
{
    return peer != nullptr && peer->isMemberOf(group);
}

std::optional<Process> Caller::findProcess() const
{
    if (peer == nullptr)
        return Process::find(pid, false);
    std::optional<Process> process = Process::hold(pid, peer->openProcess(), false);
    return process && !process->hasEnded() ? std::move(process) : std::nullopt;
}

bool Caller::isOf(const Process& process) const
{
    const bool isMeant = pid == process.getPid() || (process.leadsGroup() && processGroup == process.getPid());
    // Another user may have joined the group, and may have got the id of a process that has ended.
    return isMeant && process.belongsTo(user);
}

bool Caller::isOwnChild() const
{
    const std::optional<Process> leader = Process::find(processGroup, true);
    return leader && leader->findParent() == getpid() && isOf(*leader);
}

std::string Caller::findProgram() const
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error);
    return findProcess() && !error ? program.string() : std::string();
}

} // namespace Procmand
