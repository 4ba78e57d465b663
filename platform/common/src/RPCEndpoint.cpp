#include "RPCEndpoint.h"

#include "RPCAddress.h"

#include <cerrno>
#include <chrono>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/ReturnCode.h>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>

namespace Corvane
{

namespace
{

using RPCAddress::systemError;

/// How long a process that holds the folder is waited for; it holds it for a moment, unless it is stopped just then.
constexpr std::chrono::seconds LOCK_PATIENCE{5};
constexpr std::chrono::milliseconds LOCK_PAUSE{10};

/// @return who holds the folder, as the system tells it
std::string findHolder(int directory)
{
    struct stat status {
    };
    fstat(directory, &status);
    const std::string inode = ":" + std::to_string(status.st_ino);
    std::ifstream locks("/proc/locks");
    // "1: FLOCK  ADVISORY  WRITE 1234 fd:01:5678 0 EOF"
    std::string number, kind, mode, access, pid, file;
    for (std::string rest; locks >> number >> kind >> mode >> access >> pid >> file && std::getline(locks, rest);)
        if (kind == "FLOCK" && file.ends_with(inode))
            return "process " + pid;
    return "another process";
}

/// Holds the runtime folder for this process, so that two servers that start at once do not take a name from each
/// other.
class FolderLock
{
public:
    /// @throws RPCError  TIMED_OUT  somebody else holds it for longer than five seconds
    FolderLock(int directory, const std::string& path) : directory(directory)
    {
        const auto deadline = std::chrono::steady_clock::now() + LOCK_PATIENCE;
        while (flock(directory, LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK && errno != EINTR)
                throw systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot lock the runtime folder " + path);
            if (std::chrono::steady_clock::now() > deadline)
                throw RPCError(RPCError::Reason::TIMED_OUT, RETURN_TIMED_OUT,
                               "the runtime folder " + path + " is locked by " + findHolder(directory));
            std::this_thread::sleep_for(LOCK_PAUSE);
        }
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
    RPCAddress::requireSafeDirectory(directory.get(), folder, group);
    listener.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener.isOpen())
        throw systemError(RPCError::Reason::SYSTEM_FAILURE, "cannot create a socket");

    const FolderLock lock(directory.get(), folder);
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
    try {
        const FolderLock lock(directory.get(), path);
        struct stat status {
        };
        // Somebody may have removed the socket, and another server may have taken the name since: that one stays.
        if (stat(path.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode)
            unlink(path.c_str());
    } catch (const RPCError&) {
        // Without the lock the socket stays. It is dead, and makes way for the next server of its name.
    }
}

} // namespace Corvane
