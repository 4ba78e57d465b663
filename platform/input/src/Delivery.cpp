#include "Delivery.h"

#include "WakeUp.h"
#include <algorithm>
#include <corvane/Foundation.h>
#include <exception>
#include <sys/eventfd.h>
#include <utility>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";

} // namespace

MultiInputDriver::Delivery::Delivery()
    : ActiveObject("InputDriver"),
      wakeUp(createWakeUp()),
      devices(wakeUp.get(), [this](EventQueue::Entry entry) { append(std::move(entry)); }),
      spareReader(devices.getDescriptor(), [this] { return readOn(); })
{
}

MultiInputDriver::Delivery::~Delivery()
{
    stop();
    exit();
}

void MultiInputDriver::Delivery::stop()
{
    stopping = true;
    wake();
}

bool MultiInputDriver::Delivery::isInCall() const
{
    std::lock_guard guard(mutex);
    return threadId == std::this_thread::get_id();
}

void MultiInputDriver::Delivery::start()
{
    std::lock_guard guard(startMutex);
    spareReader.start();
    init();
}

void MultiInputDriver::Delivery::addListener(Listener* listener, unsigned int sessionIndex)
{
    if (listener == nullptr)
        return;
    std::lock_guard guard(mutex);
    const auto registered = std::ranges::find(registrations, listener, &Registration::listener);
    if (registered == registrations.end())
        registrations.push_back({listener, sessionIndex});
    else
        registered->sessionIndex = sessionIndex;
}

void MultiInputDriver::Delivery::removeListener(Listener* listener)
{
    std::unique_lock lock(mutex);
    std::erase_if(registrations, [listener](const Registration& entry) { return entry.listener == listener; });
    if (listener != nullptr && threadId != std::this_thread::get_id())
        callEnded.wait(lock, [&] { return called != listener; });
}

void MultiInputDriver::Delivery::queue(EventPointer event, unsigned int sessionIndex)
{
    if (event == nullptr)
        return;
    append({std::move(event), sessionIndex, nullptr});
    wake();
}

void MultiInputDriver::Delivery::append(EventQueue::Entry entry)
{
    std::lock_guard guard(mutex);
    events.push(std::move(entry));
}

void MultiInputDriver::Delivery::set(bool DeviceTable::Switches::*which, bool on)
{
    {
        std::lock_guard guard(mutex);
        if (std::exchange(switches.*which, on) == on)
            return;
    }
    wake();
}

bool MultiInputDriver::Delivery::isSet(bool DeviceTable::Switches::*which) const
{
    return getSwitches().*which;
}

DeviceTable::Switches MultiInputDriver::Delivery::getSwitches() const
{
    std::lock_guard guard(mutex);
    return switches;
}

void MultiInputDriver::Delivery::wake()
{
    // Cannot fail: the counter is far from its limit, for the thread takes it back to 0.
    eventfd_write(wakeUp.get(), 1);
}

int MultiInputDriver::Delivery::thread()
{
    {
        std::lock_guard guard(mutex);
        threadId = std::this_thread::get_id();
    }
    while (!stopping) {
        devices.apply(getSwitches());
        // Meanwhile the spare reader may have taken the wake-up that was meant for this thread.
        if (!deliverWaiting())
            devices.wait();
    }
    return 0;
}

bool MultiInputDriver::Delivery::deliverWaiting()
{
    std::unique_lock lock(mutex);
    const bool isAnyWaiting = !events.isEmpty();
    while (!stopping && !events.isEmpty())
        deliver(events.pop(), lock);
    return isAnyWaiting;
}

void MultiInputDriver::Delivery::deliver(const EventQueue::Entry& queued, std::unique_lock<std::mutex>& lock)
{
    const std::vector<Registration> present = registrations;
    for (const Registration& entry : present) {
        // A listener that was called before may have taken this one off or moved it, and the driver may be stopping.
        if (stopping)
            return;
        if (entry.sessionIndex != queued.sessionIndex || std::ranges::count(registrations, entry) == 0)
            continue;
        called = entry.listener;
        lock.unlock();
        callOut(*entry.listener, *queued.event);
        lock.lock();
        called = nullptr;
        callEnded.notify_all();
    }
}

void MultiInputDriver::Delivery::callOut(Listener& listener, const IWindowEvent::InputEvent& event)
{
    spareReader.lend();
    call(listener, event);
    spareReader.takeBack();
}

bool MultiInputDriver::Delivery::readOn()
{
    {
        std::lock_guard guard(mutex);
        if (events.isFull())
            return false;
    }
    // In this order: the wake-up of a switch that is turned now comes either before or after both.
    devices.poll();
    devices.apply(getSwitches());
    return true;
}

void MultiInputDriver::Delivery::call(Listener& listener, const IWindowEvent::InputEvent& event)
{
    // What one listener throws must not end the process's input.
    try {
        listener.onInputEvent(event);
    } catch (const Exception& e) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): caught exception: %s\n", __func__, e.what());
    } catch (const std::exception& e) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): caught exception: %s\n", __func__, e.what());
    } catch (...) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): caught unknown exception\n", __func__);
    }
}

} // namespace Corvane
