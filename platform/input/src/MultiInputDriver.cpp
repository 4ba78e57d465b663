#include <corvane/input/MultiInputDriver.h>

#include "Delivery.h"

namespace Corvane
{

MultiInputDriver::MultiInputDriver() : delivery(std::make_unique<Delivery>()) {}

MultiInputDriver::~MultiInputDriver() = default;

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
    delivery->hotplugEnabled = true;
}

void MultiInputDriver::disableHotplug()
{
    delivery->hotplugEnabled = false;
}

void MultiInputDriver::enableMouse()
{
    delivery->mouseEnabled = true;
}

void MultiInputDriver::disableMouse()
{
    delivery->mouseEnabled = false;
}

void MultiInputDriver::enableKeyboard()
{
    delivery->keyboardEnabled = true;
}

void MultiInputDriver::disableKeyboard()
{
    delivery->keyboardEnabled = false;
}

void MultiInputDriver::enableIr()
{
    delivery->irEnabled = true;
}

void MultiInputDriver::disableIr()
{
    delivery->irEnabled = false;
}

bool MultiInputDriver::isHotplugEnabled() const
{
    return delivery->hotplugEnabled;
}

bool MultiInputDriver::isMouseEnabled() const
{
    return delivery->mouseEnabled;
}

bool MultiInputDriver::isKeyboardEnabled() const
{
    return delivery->keyboardEnabled;
}

bool MultiInputDriver::isIrEnabled() const
{
    return delivery->irEnabled;
}

void MultiInputDriver::injectInputEvent(std::shared_ptr<const IWindowEvent::InputEvent> event,
                                        unsigned int sessionIndex)
{
    delivery->queue(std::move(event), sessionIndex);
}

} // namespace Corvane
