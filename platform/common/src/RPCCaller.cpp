#include <corvane/common/RPCCaller.h>

#include "RPCAddress.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace Corvane
{

namespace
{

/// SO_PEERPIDFD of Linux 6.5, which headers of an earlier kernel lack.
constexpr int PEER_PROCESS = 77;

thread_local RPCCaller* current = nullptr;

bool belongsTo(pid_t pid, uid_t user)
{
    struct stat status {
    };
    return stat(("/proc/" + std::to_string(pid)).c_str(), &status) == 0 && status.st_uid == user;
}

} // namespace

RPCCaller::RPCCaller(int socket) : socket(socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return;
    pid = peer.pid;
    user = peer.uid;
    group = peer.gid;
}

RPCCaller* RPCCaller::getCurrent()
{
    return current;
}

bool RPCCaller::isMemberOf(gid_t wanted)
{
    if (wanted == group)
        return true;
    if (!groups)
        groups = RPCAddress::furtherGroups(socket);
    return std::find(groups->begin(), groups->end(), wanted) != groups->end();
}

FileDescriptor RPCCaller::openProcess() const
{
    int handle = -1;
    socklen_t size = sizeof handle;
    if (getsockopt(socket, SOL_SOCKET, PEER_PROCESS, &handle, &size) == 0)
        return FileDescriptor(handle);
    // Where the system knows the process and it has gone, its id tells nothing any more.
    if (errno != ENOPROTOOPT || pid <= 0)
        return {};
    FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    // The id may have passed on to somebody else, in whose name the client must not speak.
    if (process.isOpen() && !belongsTo(pid, user))
        process.reset();
    return process;
}

RPCCaller* RPCCaller::setCurrent(RPCCaller* caller)
{
    return std::exchange(current, caller);
}

} // namespace Corvane
