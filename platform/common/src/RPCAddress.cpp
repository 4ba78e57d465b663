#include "RPCAddress.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <corvane/foundation/ReturnCode.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace Corvane::RPCAddress
{

namespace
{

constexpr std::string_view SOCKET_SUFFIX = ".sock";

bool isPlain(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
           c == '-';
}

int hexDigit(char c)
{
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    const auto position = DIGITS.find(c);
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

RPCError badAddress(const std::string& message)
{
    return {RPCError::Reason::BAD_ADDRESS, RETURN_INVALID_PARAMETER, message};
}

/// @throws RPCError  everybody may write to the folder, and so could put an impostor's socket there
void refusePublic(const struct stat& status, const std::string& path)
{
    if ((status.st_mode & S_IWOTH) != 0)
        throw badAddress("everybody may write to the runtime folder " + path);
}

} // namespace

std::string runtimeDirectory()
{
    if (const char* directory = std::getenv("CORVANE_RUNTIME_DIR"); directory != nullptr && *directory != '\0')
        return directory;
    if (const char* directory = std::getenv("XDG_RUNTIME_DIR"); directory != nullptr && *directory != '\0')
        return std::string(directory) + "/corvane";
    return "/run/corvane";
}

std::string fileName(const std::string& serverName)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string result;
    for (char c : serverName) {
        if (isPlain(c) && !(c == '.' && result.empty())) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    result += SOCKET_SUFFIX;
    return result;
}

std::optional<std::string> serverName(std::string_view fileName)
{
    if (!fileName.ends_with(SOCKET_SUFFIX))
        return std::nullopt;
    fileName.remove_suffix(SOCKET_SUFFIX.size());
    std::string result;
    for (std::size_t i = 0; i < fileName.size(); ++i) {
        if (fileName[i] != '%') {
            result += fileName[i];
            continue;
        }
        if (i + 2 >= fileName.size() || hexDigit(fileName[i + 1]) < 0 || hexDigit(fileName[i + 2]) < 0)
            return std::nullopt;
        result += static_cast<char>(hexDigit(fileName[i + 1]) * 16 + hexDigit(fileName[i + 2]));
        i += 2;
    }
    return result;
}

std::string socketPath(const std::string& serverName)
{
    return runtimeDirectory() + "/" + fileName(serverName);
}

sockaddr_un socketAddress(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw badAddress("the socket path " + path + " has " + std::to_string(path.size()) + " bytes, more than the " +
                         std::to_string(sizeof address.sun_path - 1) +
                         " that fit: choose a shorter CORVANE_RUNTIME_DIR or uid");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

std::optional<gid_t> accessGroup()
{
    const char* text = std::getenv("CORVANE_RPC_GROUP");
    if (text == nullptr || *text == '\0')
        return std::nullopt;
    gid_t number{};
    const char* end = text + std::strlen(text);
    if (const auto [stop, error] = std::from_chars(text, end, number); error == std::errc() && stop == end)
        return number;
    std::vector<char> buffer(16384);
    group entry{};
    group* found = nullptr;
    if (getgrnam_r(text, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        throw badAddress(std::string("CORVANE_RPC_GROUP names the group ") + text + ", which does not exist");
    return entry.gr_gid;
}

void createRuntimeDirectory(const std::string& directory, std::optional<gid_t> group)
{
    std::error_code error;
    if (std::filesystem::is_directory(directory, error))
        return;
    const std::filesystem::path parent = std::filesystem::path(directory).parent_path();
    if (!parent.empty())
        std::filesystem::create_directories(parent, error);
    if (mkdir(directory.c_str(), 0700) != 0) {
        if (errno == EEXIST && std::filesystem::is_directory(directory, error))
            return; // another server of the box was faster
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot create the runtime folder " + directory);
    }
    if (group &&
        (chown(directory.c_str(), static_cast<uid_t>(-1), *group) != 0 || chmod(directory.c_str(), 03770) != 0))
        throw systemError(RPCError::Reason::BAD_ADDRESS,
                          "cannot give the runtime folder " + directory + " to its group");
}

void requireSafeDirectory(int directory, const std::string& path, std::optional<gid_t> group)
{
    struct stat status {
    };
    if (fstat(directory, &status) != 0)
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot use the runtime folder " + path);
    refusePublic(status, path);
    if (status.st_uid != 0 && status.st_uid != geteuid() && (!group || status.st_gid != *group))
        throw badAddress("the runtime folder " + path + " belongs to user " + std::to_string(status.st_uid));
}

void requireTrustedServer(int socket, const std::string& serverName)
{
    const std::string path = runtimeDirectory();
    struct stat status {
    };
    ucred peer{};
    socklen_t size = sizeof peer;
    if (stat(path.c_str(), &status) != 0 || getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        throw systemError(RPCError::Reason::BAD_ADDRESS, "cannot tell whose server " + serverName + " is");
    refusePublic(status, path);
    const uid_t self = geteuid();
    const auto isTrusted = [&](uid_t user) { return user == 0 || user == status.st_uid; };
    if (!isTrusted(self) && !isTrusted(peer.uid) && peer.uid != self)
        throw badAddress("the server " + serverName + " is that of user " + std::to_string(peer.uid) +
                         ", to whom the runtime folder " + path + " does not belong");
}

bool mayConnect(int socket, std::optional<gid_t> group)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return false;
    if (peer.uid == 0 || peer.uid == geteuid())
        return true;
    if (!group)
        return false;
    if (peer.gid == *group)
        return true;
    const std::vector<gid_t> groups = furtherGroups(socket);
    return std::find(groups.begin(), groups.end(), *group) != groups.end();
}

std::vector<gid_t> furtherGroups(int socket)
{
    std::vector<gid_t> groups(64);
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    int result = getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
    if (result != 0 && errno == ERANGE) {
        groups.resize(size / sizeof(gid_t));
        result = getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
    }
    groups.resize(result == 0 ? size / sizeof(gid_t) : 0);
    return groups;
}

FileDescriptor connectTo(const sockaddr_un& address, std::chrono::milliseconds patience)
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen())
        return socket;
    const bool patient = patience > std::chrono::milliseconds::zero();
    const timeval wait{.tv_sec = static_cast<time_t>(patience.count() / 1000),
                       .tv_usec = static_cast<suseconds_t>(patience.count() % 1000 * 1000)};
    if ((patient && setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait) != 0) ||
        (!patient && fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0) ||
        connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        fcntl(socket.get(), F_SETFL, O_NONBLOCK) != 0) {
        const int error = errno;
        socket.reset();
        errno = error;
    }
    return socket;
}

RPCError systemError(RPCError::Reason reason, const std::string& message)
{
    return {reason, RETURN_REFUSED_BY_SYSTEM, message + ": " + std::generic_category().message(errno)};
}

} // namespace Corvane::RPCAddress
