#include "DeviceMonitor.h"

#include <charconv>
#include <corvane/foundation/DebugPrint.h>
#include <libudev.h>
#include <string_view>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";
constexpr const char* SUBSYSTEM = "input";

/// @return the session of a seat: of "seat0" and of no seat at all 0, of "seat7" 7; nothing for a seat without a number
std::optional<unsigned int> findSession(const char* seat)
{
    constexpr std::string_view PREFIX = "seat";
    if (seat == nullptr)
        return 0;
    const std::string_view name(seat);
    if (!name.starts_with(PREFIX))
        return {};
    const std::string_view number = name.substr(PREFIX.size());
    unsigned int session = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), session);
    if (error != std::errc() || end != number.data() + number.size())
        return {};
    return session;
}

bool isDaemonThere()
{
    return access("/run/udev/control", F_OK) == 0;
}

} // namespace

void DeviceMonitor::Deleter::operator()(udev* object) const
{
    udev_unref(object);
}

void DeviceMonitor::Deleter::operator()(udev_device* object) const
{
    udev_device_unref(object);
}

void DeviceMonitor::Deleter::operator()(udev_monitor* object) const
{
    udev_monitor_unref(object);
}

DeviceMonitor::DeviceMonitor() : library(udev_new()) {}

DeviceMonitor::~DeviceMonitor() = default;

void DeviceMonitor::reportAll(const Sink& sink) const
{
    udev_enumerate* const devices = udev_enumerate_new(library.get());
    udev_enumerate_add_match_subsystem(devices, SUBSYSTEM);
    udev_enumerate_scan_devices(devices);
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(devices); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        const std::unique_ptr<udev_device, Deleter> device(
            udev_device_new_from_syspath(library.get(), udev_list_entry_get_name(entry)));
        if (device != nullptr)
            report(*device, sink);
    }
    udev_enumerate_unref(devices);
}

bool DeviceMonitor::listen()
{
    // The daemon tells of a device when its rules have run: it has a seat and a permission then. Where no daemon runs,
    // the kernel is heard itself.
    hearsKernel = !isDaemonThere();
    monitor.reset(udev_monitor_new_from_netlink(library.get(), hearsKernel ? "kernel" : "udev"));
    if (monitor == nullptr || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), SUBSYSTEM, nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0) {
        corvaneDebugPrint(DEBUG_WARNING, TAG, "DeviceMonitor", __LINE__,
                          "devices that are plugged in are not noticed: the system does not tell\n");
        monitor.reset();
    }
    return monitor != nullptr;
}

void DeviceMonitor::stopListening()
{
    monitor.reset();
}

bool DeviceMonitor::isOutdated() const
{
    return hearsKernel && isDaemonThere();
}

int DeviceMonitor::getDescriptor() const
{
    return monitor != nullptr ? udev_monitor_get_fd(monitor.get()) : -1;
}

void DeviceMonitor::reportNews(const Sink& sink)
{
    while (const std::unique_ptr<udev_device, Deleter> device{udev_monitor_receive_device(monitor.get())})
        report(*device, sink);
}

void DeviceMonitor::report(udev_device& device, const Sink& sink)
{
    const char* const node = udev_device_get_devnode(&device);
    const char* const action = udev_device_get_action(&device);
    if (node == nullptr || !std::string_view(udev_device_get_sysname(&device)).starts_with("event"))
        return;
    const bool isRemoved = action != nullptr && std::string_view(action) == "remove";
    const char* const seat = udev_device_get_property_value(&device, "ID_SEAT");
    const std::optional<unsigned int> session = findSession(seat);
    if (!session && !isRemoved)
        corvaneDebugPrint(DEBUG_WARNING, TAG, "DeviceMonitor", __LINE__, "%s is left out: %s is no seat of a session\n",
                          node, seat);
    if (!session || isRemoved)
        return sink({.name = udev_device_get_syspath(&device), .path = node, .isGone = true});
    sink({.name = udev_device_get_syspath(&device),
          .path = node,
          .kind = classify(device),
          .sessionIndex = *session,
          .isTagged = udev_device_get_property_value(&device, "ID_INPUT") != nullptr});
}

} // namespace Corvane
