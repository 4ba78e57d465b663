#pragma once

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

/// The thread of a MultiInputDriver, the events that wait for it, and the listeners that it calls. Thread-safe.
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

    std::atomic<bool> hotplugEnabled{false};
    std::atomic<bool> mouseEnabled{false};
    std::atomic<bool> keyboardEnabled{false};
    std::atomic<bool> irEnabled{false};

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
    void wake();
    void sleep();
    void deliverWaiting();
    void deliver(const QueuedEvent& queued, std::unique_lock<std::mutex>& lock);
    static void call(Listener& listener, const IWindowEvent::InputEvent& event);

    const FileDescriptor wakeUp; ///< an eventfd: readable when there is something to do
    std::atomic<bool> stopping{false};
    std::mutex startMutex; ///< ActiveObject leaves the ordering of starts to its owner
    std::mutex mutex;      ///< guards everything below; never held while a listener runs
    std::condition_variable callEnded;
    std::vector<Registration> registrations; ///< in the order of registration
    std::deque<QueuedEvent> events;
    Listener* called = nullptr; ///< the listener that runs now
    std::thread::id threadId;
};

} // namespace Corvane
