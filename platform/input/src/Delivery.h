#pragma once

#include "DeviceTable.h"

#include <atomic>
#include <condition_variable>
#include <corvane/common/ActiveObject.h>
#include <corvane/common/FileDescriptor.h>
#include <corvane/input/MultiInputDriver.h>
#include <deque>
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

    /// Turns a class of devices, or the hearing of new ones, on or off.
    void set(bool DeviceTable::Switches::*which, bool on);
    bool isSet(bool DeviceTable::Switches::*which) const;

private:
    struct Registration {
        Listener* listener;
        unsigned int sessionIndex;
        bool operator==(const Registration&) const = default;
    };
    struct QueuedEvent {
        EventPointer event;
        unsigned int sessionIndex;
    };

    int thread() override;
    void append(EventPointer event, unsigned int sessionIndex);
    void wake();
    DeviceTable::Switches getSwitches() const;
    void deliverWaiting();
    void deliver(const QueuedEvent& queued, std::unique_lock<std::mutex>& lock);
    static void call(Listener& listener, const IWindowEvent::InputEvent& event);

    const FileDescriptor wakeUp; ///< an eventfd: readable when there is something to do
    DeviceTable devices;         ///< of the thread alone
    std::atomic<bool> stopping{false};
    std::mutex startMutex;    ///< ActiveObject leaves the ordering of starts to its owner
    mutable std::mutex mutex; ///< guards everything below; never held while a listener runs
    std::condition_variable callEnded;
    DeviceTable::Switches switches;
    std::vector<Registration> registrations; ///< in the order of registration
    std::deque<QueuedEvent> events;
    Listener* called = nullptr; ///< the listener that runs now
    std::thread::id threadId;
};

} // namespace Corvane
