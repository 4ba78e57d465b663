#include <corvane/input/MultiInputDriver.h>

#include "Delivery.h"

#include <corvane/foundation/DebugPrint.h>
#include <system_error>
#include <thread>

namespace Corvane
{

using Switches = DeviceTable::Switches;

MultiInputDriver::MultiInputDriver() : delivery(std::make_unique<Delivery>()) {}

MultiInputDriver::~MultiInputDriver()
{
    if (!delivery->isInCall())
        return;
    delivery->stop();
    // The thread that runs here cannot wait for its own end: another one does.
    Delivery* const ending = delivery.release();
    try {
        std::thread([ending] { delete ending; }).detach();
    } catch (const std::system_error& failure) {
        corvaneDebugPrint(DEBUG_ERROR, "MultiInputDriver", "MultiInputDriver", __LINE__,
                          "the threads of the driver cannot be ended: %s\n", failure.what());
    }
}

void MultiInputDriver::addInputEventListener(IWindowEvent::IInputEventListener* listener, unsigned int sessionIndex)
{
    delivery->addListener(listener, sessionIndex);
}

void MultiInputDriver::start()
{
    delivery->start();
}

void MultiInputDriver::removeInputEventListener(IWindowEvent::IInputEventListener* listener)
{
    delivery->removeListener(listener);
}

void MultiInputDriver::enableHotplug()
{
    delivery->set(&Switches::hotplug, true);
}

void MultiInputDriver::disableHotplug()
{
    delivery->set(&Switches::hotplug, false);
}

void MultiInputDriver::enableMouse()
{
    delivery->set(&Switches::mouse, true);
}

void MultiInputDriver::disableMouse()
{
    delivery->set(&Switches::mouse, false);
}

void MultiInputDriver::enableKeyboard()
{
    delivery->set(&Switches::keyboard, true);
}

void MultiInputDriver::disableKeyboard()
{
    delivery->set(&Switches::keyboard, false);
}

void MultiInputDriver::enableIr()
{
    delivery->set(&Switches::remote, true);
}

void MultiInputDriver::disableIr()
{
    delivery->set(&Switches::remote, false);
}

bool MultiInputDriver::isHotplugEnabled() const
{
    return delivery->isSet(&Switches::hotplug);
}

bool MultiInputDriver::isMouseEnabled() const
{
    return delivery->isSet(&Switches::mouse);
}

bool MultiInputDriver::isKeyboardEnabled() const
{
    return delivery->isSet(&Switches::keyboard);
}

bool MultiInputDriver::isIrEnabled() const
{
    return delivery->isSet(&Switches::remote);
}

void MultiInputDriver::injectInputEvent(std::shared_ptr<const IWindowEvent::InputEvent> event,
                                        unsigned int sessionIndex)
{
    delivery->queue(std::move(event), sessionIndex);
}

} // namespace Corvane
