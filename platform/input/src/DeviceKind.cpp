#include "DeviceKind.h"

#include "ButtonCodes.h"
#include "Evdev.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
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

/// Whether it has a knob that turns without end. Of such a device udev's rules say no more than that it is one for
/// input.
bool hasKnob(udev_device& device)
{
    constexpr int HEXADECIMAL = 16;
    udev_device* const input = udev_device_get_parent_with_subsystem_devtype(&device, "input", nullptr);
    const char* const axes = input != nullptr ? udev_device_get_sysattr_value(input, "capabilities/rel") : nullptr;
    return axes != nullptr && (std::strtoul(axes, nullptr, HEXADECIMAL) & 1UL << REL_DIAL) != 0;
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

/// Whether it has one of the codes from the first to the last, both included.
bool hasAny(const libevdev& device, unsigned int type, unsigned int first, unsigned int last)
{
    for (unsigned int code = first; code <= last; ++code)
        if (has(device, type, code))
            return true;
    return false;
}

/// Whether it has a key that is no button.
bool hasKeyCode(const libevdev& device)
{
    for (unsigned int code = KEY_ESC; code <= KEY_MAX; ++code)
        if (!isButton(code) && has(device, EV_KEY, code))
            return true;
    return false;
}

bool hasPlace(const libevdev& device)
{
    return (has(device, EV_ABS, ABS_X) && has(device, EV_ABS, ABS_Y)) ||
           (has(device, EV_ABS, ABS_MT_POSITION_X) && has(device, EV_ABS, ABS_MT_POSITION_Y));
}

/// A touch screen, a touch pad or a tablet: it tells where a finger or a tool is, and that it touches. A touch pad that
/// moves a pointer (INPUT_PROP_POINTER) has its tool as well; the absolute mouse of a virtual machine has none.
bool isTouched(const libevdev& device)
{
    // From the tools over the touch to the buttons of a pen.
    const bool hasTool = hasAny(device, EV_KEY, BTN_DIGI, BTN_TOOL_QUADTAP);
    return hasPlace(device) && (hasTool || libevdev_has_property(&device, INPUT_PROP_DIRECT) != 0);
}

bool isJoystick(const libevdev& device)
{
    return hasAny(device, EV_KEY, BTN_JOYSTICK, BTN_DIGI - 1) || hasAny(device, EV_KEY, BTN_DPAD_UP, BTN_DPAD_RIGHT) ||
           hasAny(device, EV_KEY, BTN_TRIGGER_HAPPY, BTN_TRIGGER_HAPPY40) || hasAny(device, EV_ABS, ABS_RX, ABS_RZ) ||
           hasAny(device, EV_ABS, ABS_THROTTLE, ABS_HAT3Y);
}

bool isSensor(const libevdev& device)
{
    const bool hasDirections = hasPlace(device) && has(device, EV_ABS, ABS_Z) && !has(device, EV_KEY);
    return hasDirections || libevdev_has_property(&device, INPUT_PROP_ACCELEROMETER) != 0;
}

bool isPointer(const libevdev& device)
{
    const bool isRelative = has(device, EV_REL, REL_X) && has(device, EV_REL, REL_Y);
    return has(device, EV_KEY, BTN_LEFT) && (isRelative || hasPlace(device));
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
    bool hasKeys; ///< or a knob, which stands for two
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
    const bool isMouse = hasProperty(device, "ID_INPUT_MOUSE");
    return makeKind({.isMouse = isMouse,
                     .isKeyboard = hasProperty(device, "ID_INPUT_KEYBOARD"),
                     .hasKeys = hasProperty(device, "ID_INPUT_KEY") || (!isMouse && hasKnob(device)),
                     .isOther = isOther(device)});
}

DeviceKind classify(const libevdev& device)
{
    const bool isWholeKeyboard = isKeyboard(device);
    // Some keyboards announce every button that there is, a joystick's too.
    const bool isOther = isTouched(device) || isSensor(device) || (!isWholeKeyboard && isJoystick(device));
    const bool isMouse = !isOther && isPointer(device);
    return makeKind(
        {.isMouse = isMouse,
         .isKeyboard = isWholeKeyboard,
         // The front panel of a box may have nothing but keys without a name: BTN_0, BTN_1.
         .hasKeys = isMouse || isOther ? hasKeyCode(device) : has(device, EV_KEY) || has(device, EV_REL, REL_DIAL),
         .isOther = isOther});
}

} // namespace Corvane
