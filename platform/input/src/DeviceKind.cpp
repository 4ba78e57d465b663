#include "DeviceKind.h"

#include "ButtonCodes.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <libevdev/libevdev.h>
#include <libudev.h>
#include <linux/input.h>

namespace Corvane
{

namespace
{

bool hasProperty(udev_device& device, const char* name)
{
    const char* const value = udev_device_get_property_value(&device, name);
    return value != nullptr && std::strcmp(value, "1") == 0;
}

/// Whether the device is fed by the television: over the cable, by its remote control.
bool isOnCecBus(udev_device& device)
{
    constexpr int HEXADECIMAL = 16;
    udev_device* const input = udev_device_get_parent_with_subsystem_devtype(&device, "input", nullptr);
    const char* const bus = input != nullptr ? udev_device_get_sysattr_value(input, "id/bustype") : nullptr;
    return bus != nullptr && std::strtol(bus, nullptr, HEXADECIMAL) == BUS_CEC;
}

bool has(const libevdev& device, unsigned int type, unsigned int code)
{
    return libevdev_has_event_code(&device, type, code) != 0;
}

bool has(const libevdev& device, unsigned int type)
{
    return libevdev_has_event_type(&device, type) != 0;
}

/// Whether it has a key that is no button.
bool hasKeyCode(const libevdev& device)
{
    for (unsigned int code = KEY_ESC; code <= KEY_MAX; ++code)
        if (!isButton(code) && has(device, EV_KEY, code))
            return true;
    return false;
}

bool isPointer(const libevdev& device)
{
    const bool isRelative = has(device, EV_REL, REL_X) && has(device, EV_REL, REL_Y);
    const bool isAbsolute = has(device, EV_ABS, ABS_X) && has(device, EV_ABS, ABS_Y);
    return has(device, EV_KEY, BTN_LEFT) && (isRelative || isAbsolute);
}

/// Escape, the digits, the upper row of letters and the first two keys of the next are on every keyboard, and together
/// on nothing else. It is the same test as that of udev's own rules.
bool isKeyboard(const libevdev& device)
{
    for (unsigned int code = KEY_ESC; code <= KEY_S; ++code)
        if (!has(device, EV_KEY, code))
            return false;
    return true;
}

/// What a device is, in udev's words. It may be several things.
struct Traits {
    bool isMouse;
    bool isKeyboard;
    bool hasKeys;
    bool isOther; ///< a joystick, a touch screen, a touch pad, a tablet or a sensor
};

DeviceKind makeKind(const Traits& traits)
{
    // A gamepad's Home and Back are those of a remote control, as the few keys of an air mouse are. Its buttons and
    // axes are nothing that an application would know what to do with.
    const InputClass ofFewKeys = traits.hasKeys ? InputClass::REMOTE : InputClass::NONE;
    const InputClass keys = traits.isKeyboard ? InputClass::KEYBOARD : ofFewKeys;
    const InputClass ofNoMouse = traits.isOther ? InputClass::NONE : keys;
    return {keys, traits.isMouse ? InputClass::MOUSE : ofNoMouse};
}

/// Whether it is something that is neither a mouse nor a keyboard nor a few keys.
bool isOther(udev_device& device)
{
    constexpr const char* PROPERTIES[] = {"ID_INPUT_JOYSTICK", "ID_INPUT_TOUCHSCREEN", "ID_INPUT_TOUCHPAD",
                                          "ID_INPUT_TABLET",   "ID_INPUT_TABLET_PAD",  "ID_INPUT_ACCELEROMETER"};
    return std::ranges::any_of(PROPERTIES, [&](const char* name) { return hasProperty(device, name); });
}

} // namespace

std::optional<DeviceKind> classify(udev_device& device)
{
    // First: receivers of remote controls say of themselves that they are mice, and often that they are keyboards.
    if (udev_device_get_parent_with_subsystem_devtype(&device, "rc", nullptr) != nullptr || isOnCecBus(device))
        return DeviceKind{InputClass::REMOTE, InputClass::REMOTE};
    if (!hasProperty(device, "ID_INPUT"))
        return {};
    return makeKind({.isMouse = hasProperty(device, "ID_INPUT_MOUSE"),
                     .isKeyboard = hasProperty(device, "ID_INPUT_KEYBOARD"),
                     .hasKeys = hasProperty(device, "ID_INPUT_KEY"),
                     .isOther = isOther(device)});
}

DeviceKind classify(const libevdev& device)
{
    const bool isMouse = isPointer(device);
    return makeKind({.isMouse = isMouse,
                     .isKeyboard = isKeyboard(device),
                     .hasKeys = isMouse ? hasKeyCode(device) : has(device, EV_KEY),
                     .isOther = false});
}

} // namespace Corvane
