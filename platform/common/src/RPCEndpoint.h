#pragma once

#include <corvane/common/FileDescriptor.h>
#include <optional>
#include <string>
#include <sys/types.h>
#include <sys/un.h>

namespace Corvane
{

/// A server's name on this machine: the socket that clients find it by. It is free again when this object is destroyed.
class RPCEndpoint
{
public:
    /// @throws RPCError  the name or the folder cannot be used, or a server of that name lives already
    explicit RPCEndpoint(const std::string& serverName);
    ~RPCEndpoint();
    RPCEndpoint(const RPCEndpoint&) = delete;
    RPCEndpoint& operator=(const RPCEndpoint&) = delete;

    /// @return the listening socket, non-blocking
    int getSocket() const { return listener.get(); }
    /// @return the group whose members may connect besides root and the server's own user
    std::optional<gid_t> getGroup() const { return group; }

private:
    void bindTo(const sockaddr_un& address);
    void makeReachable();
    mode_t mode() const;

    const std::string path;
    const std::optional<gid_t> group;
    FileDescriptor directory; ///< locked while the name changes hands
    FileDescriptor listener;
    dev_t device{};
    ino_t inode{};
};

} // namespace Corvane
