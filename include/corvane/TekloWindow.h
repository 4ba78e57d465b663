#pragma once

#include <corvane/Window.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <corvane/procman/IResourceAcquisition.h>

namespace Corvane
{

class ORUClient;

/// A window whose surface is one of the box's compositor: the process manager grants it, and composes it.
///
/// `init()` acquires the surface; from then on every change of visibility, opacity, order or place goes to the
/// compositor first. The surface's index is the window's client id, which the environment variables `clientid` and
/// `dfb_clientid` tell to the rest of the process. An application derives its window from this class:
///
///     class PlayerWindow : public Corvane::TekloWindow { ... };
///
/// The operations on the surface block until the manager has answered, and may be called from any thread once `init()`
/// has returned. Before, they throw Exception code 2: the window's control server is up earlier than the window. What
/// the client of the process manager throws (RPCError) passes through.
///
/// A setter that throws RPCError for any reason but CALL_FAILED (which is the manager's refusal) leaves open what
/// holds: the manager may carry the change out later, when it goes on. The window's copy and its listeners still have
/// the old value then. They learn the new one by the next getter of that property, which tells the listeners on its own
/// thread, or by the next setter that is answered. A stacking operation without an answer may be carried out later as
/// well; `getZOrder` and the manager know.
class CORVANE_EXPORT TekloWindow : public Window
{
public:
    using Window::bringForward;
    using Window::bringToFront;
    using Window::getLocation;
    using Window::getOpacity;
    using Window::getVisibility;
    using Window::getZOrder;
    using Window::sendBackward;
    using Window::sendToBack;
    using Window::setLocation;
    using Window::setOpacity;
    using Window::setVisibility;
    using Window::setZOrder;

    /// As a Window; contacts nobody.
    TekloWindow(int argc, char** argv);

    /// Initialises the window, acquires its surface and publishes the client id.
    /// @throws Exception  code 7 when the manager grants no surface
    /// @throws RPCError  there is no manager, or it does not answer
    void init() override;
    /// Gives the surface back, if there is one, and ends the connection.
    ~TekloWindow() override;

    /// The setters tell the compositor, with the full value, and then change the local copy and tell the listeners.
    void setVisibility(bool visibility) override;
    void setOpacity(unsigned int opacity) override;
    void setZOrder(unsigned int zOrder) override;
    void setLocation(const ISurfaceCompositing::Rect& location) override;
    /// The getters return what the compositor says; the local copy is not consulted. Where it differs after a setter
    /// without an answer, it is changed and the listeners are told.
    bool getVisibility() override;
    unsigned int getOpacity() override;
    unsigned int getZOrder() override;
    ISurfaceCompositing::Rect getLocation() override;
    /// Stacking is the compositor's: nothing changes here and no listener is told.
    void bringToFront() override;
    void sendToBack() override;
    void bringForward() override;
    void sendBackward() override;

    /// A hook for applications; does nothing here.
    void setInputWebSocketID(std::string& id, Window& window) override;
    /// @return the index of the surface, 0 before there is one
    virtual unsigned int getClientId() const;
    /// A hook for applications; does nothing here.
    virtual void setCursorState(const IWindowEvent::MouseEvent& event) const;
    /// Sets the environment variables `clientid` and `dfb_clientid`. Main thread only.
    /// @param id  Deliberate: not used. It is the index of the window's own surface that is published.
    virtual void setClientId(unsigned int id);

private:
    void acquireSurface();
    /// @param function, line  of the caller, for the log
    ORUClient& requireClient(const char* function, int line = __builtin_LINE());

    ORUClient* client; ///< owned; null until `init()` has asked for the surface
    IResourceAcquisition::ResourceToken resourceToken;
};

} // namespace Corvane
