#include "RPCEndpoint.h"

#include "RPCAddress.h"

#include <cerrno>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/ReturnCode.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace Corvane
{

namespace
{

using RPCAddress::systemError;

/// Holds the runtime folder for this process, so that two servers that start at once do not take a name from each
/// other.
class FolderLock
{
public:
    explicit FolderLock(int directory) : directory(directory)
    {
        while (flock(directory, LOCK_EX) != 0 && errno == EINTR)
            ;
    }
    ~FolderLock() { flock(directory, LOCK_UN); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int directory;
};

/// @return whether a server answers behind the address; one that is too busy to accept lives as well
bool isAlive(const sockaddr_un& address)
{
    return RPCAddress::connectTo(address, std::chrono::milliseconds::zero()).isOpen() || errno == EAGAIN;
}

} // namespace

RPCEndpoint::RPCEndpoint(const std::string& serverName)
    : path(RPCAddress::socketPath(serverName)), group(RPCAddress::accessGroup())
{
    const sockaddr_un address = RPCAddress::socketAddress(path);
    const std::string folder = RPCAddress::runtimeDirectory();
    RPCAddress::createRuntimeDirectory(folder, group);
    directory.reset(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen())
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot use the runtime folder " + folder);
    listener.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener.isOpen())
        throw systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot create a socket");

    FolderLock lock(directory.get());
    bindTo(address);
    try {
        makeReachable();
    } catch (...) {
        unlink(path.c_str());
        throw;
    }
}

void RPCEndpoint::bindTo(const sockaddr_un& address)
{
    // The mode of an unbound socket is the one that its file is created with: it is never open to others, not for a
    // moment.
    fchmod(listener.get(), mode());
    const auto* name = reinterpret_cast<const sockaddr*>(&address);
    int result = bind(listener.get(), name, sizeof address);
    if (result != 0 && errno == EADDRINUSE) {
        if (isAlive(address))
            throw RPCError(RPCError::Reason::BAD_ADDRESS, RETURN_INVALID_STATE,
                           "a server that is alive listens on " + path + " already");
        unlink(path.c_str()); // what a server left behind that died
        result = bind(listener.get(), name, sizeof address);
    }
    if (result != 0)
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot listen on " + path);
}

void RPCEndpoint::makeReachable()
{
    struct stat status {
    };
    if (listen(listener.get(), SOMAXCONN) != 0 || stat(path.c_str(), &status) != 0)
        throw systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot listen on " + path);
    // In this order: a client that waits for the server is woken by the change of mode, and then finds it listening.
    if ((group && chown(path.c_str(), static_cast<uid_t>(-1), *group) != 0) || chmod(path.c_str(), mode()) != 0)
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot set who may use " + path);
    device = status.st_dev;
    inode = status.st_ino;
}

mode_t RPCEndpoint::mode() const
{
    return group ? 0660 : 0600;
}

RPCEndpoint::~RPCEndpoint()
{
    FolderLock lock(directory.get());
    struct stat status {
    };
    // Somebody may have removed the socket, and another server may have taken the name since: that one stays.
    if (stat(path.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode)
        unlink(path.c_str());
}

} // namespace Corvane
