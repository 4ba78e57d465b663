#pragma once

#include "DeviceMonitor.h"
#include "EventDevice.h"
#include "EventQueue.h"
#include "InputMapFile.h"
#include "KeyboardLayout.h"
#include "NodeWatch.h"

#include <corvane/common/FileDescriptor.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Corvane
{

/// The input devices of the machine, those with a part of an enabled class open. Not synchronised.
///
///     table.apply({.hotplug = true, .mouse = true});
///     table.wait();
class DeviceTable
{
public:
    struct Switches {
        bool hotplug = false;
        bool mouse = false;
        bool keyboard = false;
        bool remote = false;
        bool operator==(const Switches&) const = default;
    };
    using Sink = std::function<void(EventQueue::Entry)>;

    /// @param wakeUp  an eventfd that ends wait(); taken back to 0 then
    /// @throws Exception  code 7 when the system refuses a descriptor
    DeviceTable(int wakeUp, Sink sink);

    /// Opens and closes devices; the first call looks for them.
    void apply(const Switches& wanted);
    /// Sleeps until a device or the eventfd has something, and passes on at most one event of each device: their turns
    /// keep one that floods from delaying the others.
    void wait();
    /// The same without the sleep.
    void poll();
    /// @return a descriptor that is readable when a device or the eventfd has something
    int getDescriptor() const { return epoll.get(); }

private:
    struct Entry {
        DeviceReport report;
        std::shared_ptr<const DeviceRule> rule = nullptr; ///< what the map says of it
        std::unique_ptr<EventDevice> device = nullptr;    ///< null while it is closed
        bool isReady = false;                             ///< there may be something to read
        bool isHungUp = false;                            ///< and nothing more will come
        bool hasFailed = false;                           ///< to open, which was told
    };

    void watch(int descriptor, void* meaning);
    void ignore(int descriptor) const;
    void switchHotplug();
    void hearNews();
    void changeSource();
    void hear(const DeviceReport& report);
    void forget(const DeviceReport& report);
    bool isWanted(InputClass which) const;
    static std::optional<DeviceKind> findKind(const Entry& entry);
    static unsigned int findSession(const Entry& entry);
    void applyMap();
    EventTranslator::Parts findWanted(const DeviceKind& kind) const;
    void update(Entry& entry);
    void open(Entry& entry);
    void complain(Entry& entry, const std::string& reason) const;
    bool watchNodes(const std::string& path);
    void openFailed();
    void close(Entry& entry);
    void read(int timeout);
    void takeWakeUp() const;
    static void markReady(Entry& entry, unsigned int events);
    void readDevices();

    const FileDescriptor epoll;
    const int wakeUp;
    const Sink sink;
    const ISurfaceCompositing::Dimensions screen;
    const std::optional<KeyRepeat> repeat; ///< nothing where the kernel's holds
    InputMapFile map;
    KeyboardLayout layout;
    DeviceMonitor monitor;
    NodeWatch nodes;                      ///< hears while there is a device that could not be opened
    std::optional<Switches> switches;     ///< as they were applied last
    std::map<std::string, Entry> entries; ///< by name
};

} // namespace Corvane
