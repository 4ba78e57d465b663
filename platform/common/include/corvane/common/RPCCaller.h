#pragma once

#include <corvane/common/FileDescriptor.h>
#include <corvane/foundation/Export.h>
#include <optional>
#include <vector>

namespace Corvane
{

/// The client at the other end of a connection, as the system knew it when it connected: what it says of itself does
/// not count.
///
///     if (RPCCaller* caller = RPCCaller::getCurrent(); caller != nullptr && caller->getUser() != 0)
///         throw std::runtime_error("for root only");
///
/// The connection owns it. Only for the thread that handles the call.
class CORVANE_EXPORT RPCCaller
{
public:
    /// Reads the credentials of the client. @param socket  of its connection, which outlives the object
    explicit RPCCaller(int socket);
    RPCCaller(const RPCCaller&) = delete;
    RPCCaller& operator=(const RPCCaller&) = delete;

    /// @return who has made the call that this thread handles; null outside of a handler, and for a call that was made
    ///         within the process
    static RPCCaller* getCurrent();

    /// @return the process, 0 where the system does not tell. Another one may have got this id since: `openProcess`
    pid_t getPid() const { return pid; }
    uid_t getUser() const { return user; }
    /// @return whether the client was a member of the group, as its main one or as a further one
    bool isMemberOf(gid_t group);
    /// @return a descriptor of the client's process (pidfd_open(2)), closed when that has ended. It is never that of
    ///         another user's process that has got the id since; before Linux 6.5 it may be one of the same user.
    FileDescriptor openProcess() const;

private:
    friend class RPCCallerScope;

    /// @return the one before
    static RPCCaller* setCurrent(RPCCaller* caller);

    const int socket;
    pid_t pid = 0;
    uid_t user = static_cast<uid_t>(-1);
    gid_t group = static_cast<gid_t>(-1);
    std::optional<std::vector<gid_t>> groups; ///< once they were asked for
};

} // namespace Corvane
