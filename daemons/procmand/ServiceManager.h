#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace Procmand
{

/// The service manager of the system that started this process, such as systemd: the one that waits to hear that the
/// process serves, and that its loop turns.
///
/// Where nothing waits, telling does nothing. What a service manager listens for is not for the applications:
/// construction takes NOTIFY_SOCKET and WATCHDOG_USEC out of the environment, so it comes before the first thread.
class ServiceManager
{
public:
    ServiceManager();

    /// @param state  as sd_notify(3) has it: "READY=1", "STOPPING=1", "WATCHDOG=1"
    void tell(const std::string& state) const;
    /// @return how often "WATCHDOG=1" is to be told: twice as often as it must be; none where nobody waits for it
    std::optional<std::chrono::milliseconds> getWatchdogInterval() const { return watchdogInterval; }

private:
    std::string socket; ///< a path, or an abstract name after a zero byte; empty for none
    std::optional<std::chrono::milliseconds> watchdogInterval;
};

} // namespace Procmand
