#include "box/ServerSocket.h"

#include <cerrno>
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCServer.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Procmand
{

namespace
{

using Corvane::FileDescriptor;

/// @return the connection; or none, and errno tells why
FileDescriptor connectTo(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return {};
    }
    path.copy(address.sun_path, path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return socket;
    const int error = errno;
    socket.reset();
    errno = error;
    return socket;
}

} // namespace

std::string serverNameOf(const std::string& uid)
{
    return "APP" + uid;
}

std::string findSocketPath(const std::string& serverName)
{
    // A server that is never brought up knows its address all the same.
    return Corvane::RPCServer(serverName.c_str()).getFixedRPCAddress();
}

std::optional<Process> findServer(const std::string& serverName)
{
    const FileDescriptor socket = connectTo(findSocketPath(serverName));
    ucred peer{};
    socklen_t size = sizeof peer;
    if (!socket.isOpen() || getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return std::nullopt;
    std::optional<Process> process = Process::find(peer.pid, false);
    return process && process->belongsTo(peer.uid) ? std::move(process) : std::nullopt;
}

bool removeDeadSocket(const std::string& serverName)
{
    const std::string path = findSocketPath(serverName);
    // Whoever takes a name holds the folder meanwhile: between the look at the socket and its removal nobody does.
    const FileDescriptor folder(open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen() && flock(folder.get(), LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK;
    struct stat status {
    };
    if (lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) && !connectTo(path).isOpen() &&
        errno == ECONNREFUSED)
        unlink(path.c_str());
    return true;
}

} // namespace Procmand
