#pragma once

#include <corvane/input/InputDriver.h>
#include <memory>

namespace Corvane
{

/// The input driver of a process: mice, keyboards and remote controls, by display session.
///
/// Listeners are called on the driver's own thread, in the order of the events; no lock is held while one runs, so it
/// may add and remove listeners. While one takes long the devices are read on, by a second thread that calls nobody:
/// keys wait, and movement is merged when much of it waits. Both threads sleep until there is something to do.
///
/// Devices are looked for when the driver starts and, with hotplug enabled, as they come and go. A device may be of two
/// classes, as a keyboard with a track ball is; it is closed while neither is enabled. What is held when its class is
/// disabled, or its device closed, is released. A device that cannot be opened is one debug line and hinders no other.
/// docs/input.md says which events a device gives.
///
///     MultiInputDriver* driver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
///     driver->addInputEventListener(&listener, 0);
///     driver->start();
class CORVANE_EXPORT MultiInputDriver : public InputDriver
{
public:
    MultiInputDriver();
    /// Stops delivery; events that were not delivered are dropped. Waits for a listener that runs, unless it is that
    /// listener who calls: what the running call still needs is then freed behind it.
    ~MultiInputDriver() override;

    void addInputEventListener(IWindowEvent::IInputEventListener* listener, unsigned int sessionIndex) override;
    void start() override;
    void removeInputEventListener(IWindowEvent::IInputEventListener* listener) override;
    void enableHotplug() override;
    void disableHotplug() override;
    void enableMouse() override;
    void disableMouse() override;
    void enableKeyboard() override;
    void disableKeyboard() override;
    void enableIr() override;
    void disableIr() override;

    bool isHotplugEnabled() const;
    bool isMouseEnabled() const;
    bool isKeyboardEnabled() const;
    bool isIrEnabled() const;

    /// Queues an event for the listeners of a session, behind those that wait already; returns at once.
    void injectInputEvent(std::shared_ptr<const IWindowEvent::InputEvent> event, unsigned int sessionIndex);

private:
    class CORVANE_HIDDEN Delivery;
    std::unique_ptr<Delivery> delivery;
};

} // namespace Corvane
