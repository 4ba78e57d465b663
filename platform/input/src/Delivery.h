#pragma once

#include "DeviceTable.h"
#include "EventQueue.h"
#include "SpareReader.h"

#include <atomic>
#include <condition_variable>
#include <corvane/common/ActiveObject.h>
#include <corvane/common/FileDescriptor.h>
#include <corvane/input/MultiInputDriver.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Corvane
{

/// The thread of a MultiInputDriver, the devices that it reads, the events that wait, and the listeners that it calls.
/// Thread-safe.
class MultiInputDriver::Delivery : private ActiveObject
{
public:
    using Listener = IWindowEvent::IInputEventListener;
    using EventPointer = std::shared_ptr<const IWindowEvent::InputEvent>;

    Delivery();
    /// Waits for a listener that runs. Never called by a listener.
    ~Delivery() override;

    void start();
    void addListener(Listener* listener, unsigned int sessionIndex);
    /// Waits for a call of this listener that runs, but not on the driver's own thread, where it would wait for itself.
    void removeListener(Listener* listener);
    void queue(EventPointer event, unsigned int sessionIndex);
    /// Lets no further call begin.
    void stop();
    /// Whether it is a listener who asks.
    bool isInCall() const;

    /// Turns a class of devices, or the hearing of new ones, on or off.
    void set(bool DeviceTable::Switches::*which, bool on);
    bool isSet(bool DeviceTable::Switches::*which) const;

private:
    struct Registration {
        Listener* listener;
        unsigned int sessionIndex;
        bool operator==(const Registration&) const = default;
    };

    int thread() override;
    void append(EventQueue::Entry entry);
    void wake();
    DeviceTable::Switches getSwitches() const;
    bool deliverWaiting(); ///< @return whether there was something
    void deliver(const EventQueue::Entry& queued, std::unique_lock<std::mutex>& lock);
    bool readOn();
    void callOut(Listener& listener, const IWindowEvent::InputEvent& event);
    static void call(Listener& listener, const IWindowEvent::InputEvent& event);

    const FileDescriptor wakeUp; ///< an eventfd: readable when there is something to do
    DeviceTable devices;         ///< of the thread, which lends it to the spare reader while a listener runs
    SpareReader spareReader;
    std::atomic<bool> stopping{false};
    std::mutex startMutex;    ///< ActiveObject leaves the ordering of starts to its owner
    mutable std::mutex mutex; ///< guards everything below; never held while a listener runs
    std::condition_variable callEnded;
    DeviceTable::Switches switches;
    std::vector<Registration> registrations; ///< in the order of registration
    EventQueue events;
    Listener* called = nullptr; ///< the listener that runs now
    std::thread::id threadId;
};

} // namespace Corvane
