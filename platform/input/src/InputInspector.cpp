#include <corvane/input/InputInspector.h>

#include "DeviceMonitor.h"
#include "EventDevice.h"
#include "InputMapFile.h"
#include "KeyboardLayout.h"
#include "ScreenSize.h"

#include <algorithm>
#include <linux/input-event-codes.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Corvane
{

namespace
{

/// A device as it was found, open unless it is ignored or cannot be opened.
struct FoundDevice {
    InputDeviceDescription description;
    DeviceKind kind{};
    std::shared_ptr<const DeviceRule> rule;
    std::unique_ptr<EventDevice> device{};
};

void open(FoundDevice& found, std::optional<DeviceKind> own)
{
    try {
        auto device = std::make_unique<EventDevice>(found.description.path);
        if (!own)
            own = device->findKind();
        found.kind = found.rule != nullptr ? *found.rule->decide(own) : *own;
        found.device = std::move(device);
    } catch (const std::system_error& failure) {
        found.description.problem = failure.code().message();
    }
}

FoundDevice find(const DeviceReport& report, const InputMapFile& map)
{
    const DeviceIdentity identity = readIdentity(report.name);
    FoundDevice found{.description = {.path = report.path,
                                      .name = identity.name,
                                      .bus = nameOfBus(identity.bus),
                                      .vendor = identity.vendor,
                                      .product = identity.product,
                                      .sessionIndex = report.sessionIndex},
                      .rule = map.find(report.name)};
    InputDeviceDescription& description = found.description;
    std::optional<DeviceKind> kind = report.kind;
    if (found.rule != nullptr) {
        description.rule = found.rule->title;
        description.isIgnored = found.rule->isIgnored;
        description.sessionIndex = found.rule->session.value_or(report.sessionIndex);
        kind = found.rule->decide(kind);
    }
    if (!description.isIgnored)
        open(found, report.kind);
    if (found.device != nullptr)
        kind = found.kind;
    if (kind) {
        description.keysClass = nameOf(kind->keys);
        description.pointerClass = nameOf(kind->pointer);
    }
    return found;
}

std::vector<FoundDevice> findDevices()
{
    const InputMapFile map;
    std::vector<FoundDevice> devices;
    DeviceMonitor().reportAll([&](const DeviceReport& report) {
        if (!report.isGone)
            devices.push_back(find(report, map));
    });
    std::ranges::sort(devices, {}, [](const FoundDevice& found) {
        // As people count: event9 comes before event10.
        return std::pair(found.description.path.size(), found.description.path);
    });
    return devices;
}

/// Reads one device, and gathers a frame.
class Observer
{
public:
    using Sink = std::function<void(const InputObservation&)>;

    Observer(FoundDevice found, KeyboardLayout& layout, const Sink& sink);

    int getDescriptor() const { return device->getDescriptor(); }
    /// Passes on the frames that wait. @return false when the device is gone
    bool read();

private:
    void note(unsigned int type, unsigned int code, int value);

    const Sink& sink;
    const std::unique_ptr<EventDevice> device;
    InputObservation frame;
    bool isFrameWhole = false;
};

Observer::Observer(FoundDevice found, KeyboardLayout& layout, const Sink& sink)
    : sink(sink), device(std::move(found.device)), frame{.path = found.description.path}
{
    device->start(found.kind, readScreenSize(),
                  [this](EventTranslator::EventPointer event) { frame.events.push_back(std::move(event)); });
    if (found.kind.keys == InputClass::KEYBOARD)
        device->setTyping(layout.makeTyping());
    device->setRule(found.rule);
    device->setProbe([this](unsigned int type, unsigned int code, int value) { note(type, code, value); });
    device->enable({.keys = found.kind.keys != InputClass::NONE, .pointer = found.kind.pointer != InputClass::NONE});
}

void Observer::note(unsigned int type, unsigned int code, int value)
{
    if (type == EV_MSC && code == MSC_SCAN)
        frame.scans.push_back(static_cast<unsigned int>(value));
    else if (type == EV_KEY)
        frame.keys.push_back({static_cast<IWindowEvent::KeyEvent::Code>(code), value});
    isFrameWhole = type == EV_SYN;
}

bool Observer::read()
{
    EventDevice::Reading reading = EventDevice::Reading::MORE;
    while (reading == EventDevice::Reading::MORE) {
        reading = device->read();
        if (!std::exchange(isFrameWhole, false))
            continue;
        if (!frame.scans.empty() || !frame.keys.empty())
            sink(frame);
        frame = {.path = std::move(frame.path)};
    }
    return reading == EventDevice::Reading::DONE;
}

std::string describeProblems(const std::vector<FoundDevice>& devices)
{
    if (devices.empty())
        return "there is no input device";
    std::string text = "no input device can be opened";
    for (const FoundDevice& found : devices)
        text += "; " + found.description.path + ": " +
                (found.description.isIgnored ? "ignored by the map" : found.description.problem);
    return text;
}

std::vector<std::unique_ptr<Observer>> openObservers(const Observer::Sink& sink)
{
    std::vector<FoundDevice> devices = findDevices();
    if (std::ranges::none_of(devices, [](const FoundDevice& found) { return found.device != nullptr; }))
        throw std::runtime_error(describeProblems(devices));
    KeyboardLayout layout;
    std::vector<std::unique_ptr<Observer>> observers;
    for (FoundDevice& found : devices)
        if (found.device != nullptr)
            observers.push_back(std::make_unique<Observer>(std::move(found), layout, sink));
    return observers;
}

} // namespace

std::vector<InputDeviceDescription> describeInputDevices()
{
    std::vector<InputDeviceDescription> descriptions;
    for (FoundDevice& found : findDevices())
        descriptions.push_back(std::move(found.description));
    return descriptions;
}

void observeInputDevices(const std::function<void()>& isReady, const std::function<void(const InputObservation&)>& sink,
                         int stop)
{
    std::vector<std::unique_ptr<Observer>> observers = openObservers(sink);
    isReady();
    while (!observers.empty()) {
        std::vector<pollfd> waited{{.fd = stop, .events = POLLIN, .revents = 0}};
        for (const auto& observer : observers)
            waited.push_back({.fd = observer->getDescriptor(), .events = POLLIN, .revents = 0});
        if (poll(waited.data(), waited.size(), -1) < 0)
            continue; // a signal; nothing else can go wrong here
        if (waited.front().revents != 0)
            return;
        for (std::size_t i = observers.size(); i-- > 0;) {
            // What has hung up still gives what it had.
            const short events = waited[i + 1].revents;
            if (events != 0 && (!observers[i]->read() || (events & (POLLHUP | POLLERR)) != 0))
                observers.erase(observers.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

} // namespace Corvane
