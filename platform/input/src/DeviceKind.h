#pragma once

#include <optional>

struct libevdev;
struct udev_device;

namespace Corvane
{

/// What input is switched by. Each class but NONE has a switch of its own.
enum class InputClass { NONE, MOUSE, KEYBOARD, REMOTE };

/// What the driver takes an input device for. Its two parts may be of two classes, as on a keyboard with a track ball.
struct DeviceKind {
    InputClass keys = InputClass::NONE;    ///< of its KEY_ codes
    InputClass pointer = InputClass::NONE; ///< of its axes and its BTN_ codes
    bool operator==(const DeviceKind&) const = default;
};

/// @return nothing when the device has to be opened to tell: no udev daemon has looked at it
std::optional<DeviceKind> classify(udev_device& device);

/// Tells by what the device can report.
DeviceKind classify(const libevdev& device);

} // namespace Corvane
