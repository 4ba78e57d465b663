#pragma once

#include "DeviceKind.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

struct udev;
struct udev_device;
struct udev_monitor;

namespace Corvane
{

/// What the system says of a device for input events.
struct DeviceReport {
    std::string name;                 ///< unique while the device exists
    std::string path;                 ///< of its node
    std::optional<DeviceKind> kind{}; ///< nothing when it has to be opened to tell
    unsigned int sessionIndex = 0;
    bool isTagged = false; ///< udev's rules have run for it
    bool isGone = false;   ///< the rest is then without meaning
};

/// Finds the input devices, and hears of those that come and go. Not synchronised.
///
/// Works without a udev daemon as well, and without any device.
class DeviceMonitor
{
public:
    using Sink = std::function<void(const DeviceReport&)>;

    DeviceMonitor();
    ~DeviceMonitor();
    DeviceMonitor(const DeviceMonitor&) = delete;
    DeviceMonitor& operator=(const DeviceMonitor&) = delete;

    /// Reports each device that there is.
    void reportAll(const Sink& sink) const;
    /// Starts to listen. @return false when the system offers no news, which is one debug line
    bool listen();
    void stopListening();
    /// @return whether a daemon has been started since listen() found none: it knows more than what is heard now
    bool isOutdated() const;
    /// @return a descriptor that is readable when there is news; -1 while this does not listen
    int getDescriptor() const;
    /// Reports the news that wait; does not block.
    void reportNews(const Sink& sink);

private:
    struct Deleter {
        void operator()(udev* object) const;
        void operator()(udev_device* object) const;
        void operator()(udev_monitor* object) const;
    };

    static void report(udev_device& device, const Sink& sink);

    const std::unique_ptr<udev, Deleter> library;
    std::unique_ptr<udev_monitor, Deleter> monitor;
    bool hearsKernel = false; ///< for want of a daemon
};

} // namespace Corvane
