#include "ServiceManager.h"

#include <cerrno>
#include <charconv>
#include <corvane/common/FileDescriptor.h>
#include <corvane/foundation/DebugPrint.h>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// @return the variable, empty where there is none
std::string readVariable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::optional<long long> readNumber(const std::string& text)
{
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0)
        return std::nullopt;
    return number;
}

} // namespace

ServiceManager::ServiceManager() : socket(readVariable("NOTIFY_SOCKET"))
{
    if (socket.starts_with('@'))
        socket.front() = '\0';
    const std::optional<long long> microseconds = readNumber(readVariable("WATCHDOG_USEC"));
    // It may be meant for the process that this one was started by.
    const std::string pid = readVariable("WATCHDOG_PID");
    if (microseconds && (pid.empty() || readNumber(pid) == getpid()))
        watchdogInterval = std::chrono::milliseconds(*microseconds / 2000);
}

void ServiceManager::tell(const std::string& state) const
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket.empty() || socket.size() >= sizeof address.sun_path)
        return;
    socket.copy(address.sun_path, socket.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + socket.size());
    // Never waits: the loop tells, and a service manager that does not read must not stop it.
    const Corvane::FileDescriptor sender(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (sendto(sender.get(), state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
               length) < 0)
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "ServiceManager", __LINE__,
                                   "the service manager was not told %s: %s\n", state.c_str(), std::strerror(errno));
}

} // namespace Procmand
