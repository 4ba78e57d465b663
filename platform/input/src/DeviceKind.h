#pragma once

#include <optional>

struct libevdev;
struct udev_device;

namespace Corvane
{

/// What the driver takes an input device for. Each kind but NONE has a switch of its own.
enum class DeviceKind { NONE, MOUSE, KEYBOARD, REMOTE };

/// @return nothing when the device has to be opened to tell: no udev daemon has looked at it
std::optional<DeviceKind> classify(udev_device& device);

/// Tells by what the device can report.
DeviceKind classify(const libevdev& device);

} // namespace Corvane
