#include "Delivery.h"

#include <algorithm>
#include <cerrno>
#include <corvane/Foundation.h>
#include <cstring>
#include <exception>
#include <sys/eventfd.h>
#include <utility>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";

int createEvent()
{
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor >= 0)
        return descriptor;
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "eventfd failed %s", std::strerror(errno));
    throw Exception(RETURN_REFUSED_BY_SYSTEM);
}

} // namespace

MultiInputDriver::Delivery::Delivery()
    : ActiveObject("InputDriver"),
      wakeUp(createEvent()),
      devices(wakeUp.get(), [this](auto event, unsigned int session) { append(std::move(event), session); })
{
}

MultiInputDriver::Delivery::~Delivery()
{
    stopping = true;
    wake();
    exit();
}

void MultiInputDriver::Delivery::start()
{
    std::lock_guard guard(startMutex);
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
    append(std::move(event), sessionIndex);
    wake();
}

void MultiInputDriver::Delivery::append(EventPointer event, unsigned int sessionIndex)
{
    std::lock_guard guard(mutex);
    events.push_back({std::move(event), sessionIndex});
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
        deliverWaiting();
        devices.wait();
    }
    return 0;
}

void MultiInputDriver::Delivery::deliverWaiting()
{
    std::unique_lock lock(mutex);
    while (!stopping && !events.empty()) {
        const QueuedEvent next = std::move(events.front());
        events.pop_front();
        deliver(next, lock);
    }
}

void MultiInputDriver::Delivery::deliver(const QueuedEvent& queued, std::unique_lock<std::mutex>& lock)
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
        call(*entry.listener, *queued.event);
        lock.lock();
        called = nullptr;
        callEnded.notify_all();
    }
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
