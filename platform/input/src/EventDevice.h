#pragma once

#include "DeviceKind.h"
#include "EventTranslator.h"
#include "KeyMapping.h"
#include "KeyRepeat.h"

#include <corvane/common/FileDescriptor.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct input_event;
struct libevdev;

namespace Corvane
{

/// An open input device. Not synchronised.
///
/// It is never grabbed: several processes of a box read the same devices.
class EventDevice
{
public:
    enum class Reading {
        DONE, ///< there is no more for now
        MORE, ///< there may be more, although the descriptor need not say so
        LOST  ///< the device is gone
    };

    /// Sees what the device reports before anything is made of it.
    using Probe = std::function<void(unsigned int type, unsigned int code, int value)>;

    /// @throws std::system_error  it cannot be opened
    explicit EventDevice(const std::string& path);
    ~EventDevice();
    EventDevice(const EventDevice&) = delete;
    EventDevice& operator=(const EventDevice&) = delete;

    int getDescriptor() const { return descriptor.get(); }
    DeviceKind findKind() const;

    /// Says what to make of the events; once, before the first enable().
    void start(const DeviceKind& kind, const ISurfaceCompositing::Dimensions& screen, EventTranslator::Sink sink);
    /// Says how its keys repeat, where the device has them repeated at all. It holds for all who read the device.
    void setRepeat(const KeyRepeat& repeat) const;
    /// Gives a keyboard another layout than the US one; after start(), before the first enable(). Null leaves it.
    void setTyping(std::unique_ptr<Typing> typing);
    /// Says what the map wants of its keys; before the first enable(). Null is nothing.
    void setRule(std::shared_ptr<const DeviceRule> rule);
    void setProbe(Probe newProbe) { probe = std::move(newProbe); }
    /// Turns the parts of the device on and off. Passes on the releases of what is held on one that goes off.
    void enable(const EventTranslator::Parts& parts);
    /// Passes on the next event, if there is one; does not block.
    Reading read();

private:
    struct Deleter {
        void operator()(libevdev* device) const;
    };

    void handle(const input_event& event);
    void showCapsLock() const;
    void tellOfLoss();
    void findKeys();
    void findAxes(const ISurfaceCompositing::Dimensions& screen);

    const std::string path;
    const FileDescriptor descriptor;
    std::unique_ptr<libevdev, Deleter> device;
    Probe probe; ///< empty in a driver
    KeyMapping mapping;
    std::optional<EventTranslator> translator;
    bool isSynchronising = false; ///< events were lost; what comes next is how the device's state changed meanwhile
    unsigned int losses = 0;      ///< how often events were lost
};

} // namespace Corvane
