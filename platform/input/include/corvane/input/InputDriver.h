#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/Singleton.h>
#include <corvane/interfaces/IWindowEvent.h>

namespace Corvane
{

/// The process-wide source of input events, shared by all its users: a Singleton.
///
/// Every operation is thread-safe. `delete` gives a reference back; see Singleton. The last one destroys the driver: it
/// waits for a listener that runs, and holds the lock of all singletons meanwhile. So a listener takes no reference on
/// a Singleton while that may happen, or the two wait for each other for ever. Given back inside a listener, the last
/// reference waits for nobody; the running call is then the last one.
class CORVANE_EXPORT InputDriver : public Singleton<InputDriver>
{
public:
    /// Registers a listener for the input of one display session. A listener that is registered already is moved to the
    /// session given now. Not owned. Null is ignored.
    virtual void addInputEventListener(IWindowEvent::IInputEventListener* listener, unsigned int sessionIndex) = 0;
    /// Starts delivery; without effect when it runs already.
    /// @throws Exception  code 7 when the system refuses a thread
    virtual void start() = 0;
    /// Takes a listener off. When this returns it is not being called and is never called again, unless a listener
    /// takes itself off from inside its call: then the running call is its last.
    virtual void removeInputEventListener(IWindowEvent::IInputEventListener* listener) = 0;

    /// Listens for devices that are plugged in and out.
    virtual void enableHotplug() = 0;
    virtual void disableHotplug() = 0;
    /// What belongs to a class that is disabled is dropped, and a device without an enabled class is not read at all;
    /// all are disabled at first.
    virtual void enableMouse() = 0;
    virtual void disableMouse() = 0;
    virtual void enableKeyboard() = 0;
    virtual void disableKeyboard() = 0;
    virtual void enableIr() = 0;
    virtual void disableIr() = 0;

    ~InputDriver() override;

protected:
    InputDriver() = default;
};

extern template class Singleton<InputDriver>;

} // namespace Corvane
