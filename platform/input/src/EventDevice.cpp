#include "EventDevice.h"

#include "ButtonCodes.h"
#include "Evdev.h"

#include <bit>
#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";
constexpr const char* COMPONENT = "EventDevice";

/// How many reports without a meaning are skipped at a time: a flood of them must not hold up other devices either.
constexpr int REPORTS_AT_A_TIME = 64;

int openNode(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category());
    return descriptor;
}

EventTranslator::Axis getAxis(const libevdev& device, unsigned int code)
{
    return {libevdev_get_abs_minimum(&device, code), libevdev_get_abs_maximum(&device, code),
            libevdev_get_event_value(&device, EV_ABS, code)};
}

} // namespace

void EventDevice::Deleter::operator()(libevdev* device) const
{
    libevdev_free(device);
}

EventDevice::EventDevice(const std::string& path) : path(path), descriptor(openNode(path))
{
    libevdev* opened = nullptr;
    const int result = libevdev_new_from_fd(descriptor.get(), &opened);
    if (result < 0)
        throw std::system_error(-result, std::generic_category());
    device.reset(opened);
}

EventDevice::~EventDevice() = default;

DeviceKind EventDevice::findKind() const
{
    return classify(*device);
}

void EventDevice::start(const DeviceKind& kind, const ISurfaceCompositing::Dimensions& screen,
                        EventTranslator::Sink sink)
{
    translator.emplace(kind.keys == InputClass::KEYBOARD, std::move(sink));
    // Elsewhere the axes are a stick or a knob.
    if (kind.pointer == InputClass::MOUSE)
        findAxes(screen);
}

void EventDevice::setRepeat(const KeyRepeat& repeat) const
{
    const unsigned int values[] = {repeat.delay, repeat.period};
    if (libevdev_has_event_type(device.get(), EV_REP) != 0 && ioctl(descriptor.get(), EVIOCSREP, values) < 0)
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__, "%s repeats its keys as before: %s\n", path.c_str(),
                          std::strerror(errno));
}

void EventDevice::setTyping(std::unique_ptr<Typing> typing)
{
    translator->setTyping(std::move(typing));
}

void EventDevice::setRule(std::shared_ptr<const DeviceRule> rule)
{
    mapping.setRule(std::move(rule));
}

void EventDevice::enable(const EventTranslator::Parts& parts)
{
    if (parts.keys && !translator->getEnabled().keys)
        findKeys();
    translator->enable(parts);
}

void EventDevice::findKeys()
{
    translator->setCapsLock(libevdev_get_event_value(device.get(), EV_LED, LED_CAPSL) != 0);
    for (unsigned int code = KEY_ESC; code <= KEY_MAX; ++code)
        if (!isButton(code) && libevdev_get_event_value(device.get(), EV_KEY, code) != 0)
            translator->setDown(mapping.setDown(code));
}

void EventDevice::findAxes(const ISurfaceCompositing::Dimensions& screen)
{
    const EventTranslator::Axis x = getAxis(*device, ABS_X);
    const EventTranslator::Axis y = getAxis(*device, ABS_Y);
    if (x.minimum < x.maximum && y.minimum < y.maximum)
        translator->setAbsolute(x, y, screen);
}

EventDevice::Reading EventDevice::read()
{
    for (int i = 0; i < REPORTS_AT_A_TIME; ++i) {
        input_event event{};
        const unsigned int mode = isSynchronising ? LIBEVDEV_READ_FLAG_SYNC : LIBEVDEV_READ_FLAG_NORMAL;
        const int result = libevdev_next_event(device.get(), mode, &event);
        if (result == LIBEVDEV_READ_STATUS_SUCCESS || result == LIBEVDEV_READ_STATUS_SYNC) {
            if (result == LIBEVDEV_READ_STATUS_SYNC && !isSynchronising)
                tellOfLoss();
            isSynchronising = result == LIBEVDEV_READ_STATUS_SYNC;
            if (probe)
                probe(event.type, event.code, event.value);
            handle(event);
            // These two are what gives an event. It is delivered before more is read, so that it waits for nothing.
            if (event.type == EV_KEY || event.type == EV_SYN)
                return Reading::MORE;
        } else if (result == -EAGAIN && isSynchronising) {
            isSynchronising = false;
        } else if (result == -EAGAIN) {
            return Reading::DONE;
        } else if (result != -EINTR) {
            return Reading::LOST;
        }
    }
    return Reading::MORE;
}

void EventDevice::handle(const input_event& event)
{
    const bool wasCapsLocked = translator->isCapsLocked();
    mapping.handle(event.type, event.code, event.value, *translator);
    // Not when it was the light that said so.
    if (event.type == EV_KEY && translator->isCapsLocked() != wasCapsLocked)
        showCapsLock();
}

void EventDevice::showCapsLock() const
{
    if (libevdev_has_event_code(device.get(), EV_LED, LED_CAPSL) == 0)
        return;
    // The kernel's console turns this light, where there is one and it hears the keyboard. To turn it once more does no
    // harm; the kernel drops what changes nothing. Who may only read the device types on without a light.
    const FileDescriptor light(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    input_event frame[2]{};
    frame[0].type = EV_LED;
    frame[0].code = LED_CAPSL;
    frame[0].value = translator->isCapsLocked() ? 1 : 0;
    frame[1].type = EV_SYN;
    frame[1].code = SYN_REPORT;
    if (light.isOpen() && write(light.get(), frame, sizeof frame) < 0)
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__, "%s does not show Caps Lock: %s\n", path.c_str(),
                          std::strerror(errno));
}

void EventDevice::tellOfLoss()
{
    // A flood that nobody can follow must not fill the log as well.
    if (std::has_single_bit(++losses))
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__,
                          "%s lost events, %u times so far: they were not read in time\n", path.c_str(), losses);
}

} // namespace Corvane
