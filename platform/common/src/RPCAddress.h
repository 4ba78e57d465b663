#pragma once

#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCError.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>
#include <vector>

/// Where servers are found: socket NAME.sock in the runtime folder, and who may use it.
namespace Corvane::RPCAddress
{

/// @return CORVANE_RUNTIME_DIR, else $XDG_RUNTIME_DIR/corvane, else /run/corvane
std::string runtimeDirectory();

/// @return the file name of a server's socket: every byte outside [A-Za-z0-9._-], and a leading dot, as %XX, so that a
/// name can neither leave the folder nor hide in it
std::string fileName(const std::string& serverName);
/// The way back. @return nothing for a file that is no server's socket
std::optional<std::string> serverName(std::string_view fileName);

/// @return the path of a server's socket
std::string socketPath(const std::string& serverName);
/// @throws RPCError  BAD_ADDRESS when the path does not fit into a socket address
sockaddr_un socketAddress(const std::string& path);

/// @return the group in CORVANE_RPC_GROUP (a name or a number), nothing when it is not set
/// @throws RPCError  BAD_ADDRESS for a group that does not exist
std::optional<gid_t> accessGroup();

/// Creates the runtime folder where it is missing: 0700, or 03770 for the access group.
/// @throws RPCError  BAD_ADDRESS
void createRuntimeDirectory(const std::string& directory, std::optional<gid_t> group);

/// Makes sure that a server can rely on the runtime folder: it is root's, this process's user's or, where there is an
/// access group, that group's; and not everybody may write there.
/// @param directory  open. @throws RPCError  BAD_ADDRESS
void requireSafeDirectory(int directory, const std::string& path, std::optional<gid_t> group);
/// Makes sure that a client can take the server behind a connection for what its name says: not everybody may write to
/// the runtime folder, and the server is root's, this process's user's or that of the folder's owner. For root and for
/// that owner the first is enough: whom they let write there is their own decision.
/// @throws RPCError  BAD_ADDRESS
void requireTrustedServer(int socket, const std::string& serverName);

/// @return whether the peer of a connection is root, this process's user, or a member of the group
bool mayConnect(int socket, std::optional<gid_t> group);

/// @return the groups of the peer of a connection besides its main one
std::vector<gid_t> furtherGroups(int socket);

/// Connects to the server that listens on the path.
/// @param patience  how long to wait for a server that has many waiting already; 0: not at all
/// @return a non-blocking socket, or none: then errno tells why (EAGAIN: the server lives, but was too busy)
FileDescriptor connectTo(const sockaddr_un& address, std::chrono::milliseconds patience);

/// @return an error with the system's word for `errno` behind the message
RPCError systemError(RPCError::Reason reason, const std::string& message);

} // namespace Corvane::RPCAddress
