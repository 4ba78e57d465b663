#pragma once

#include <corvane/Application.h>
#include <corvane/interfaces/IWindow.h>
#include <corvane/interfaces/IWindowManager.h>

namespace Corvane
{

class ICursor;
class MultiInputDriver;

/// The application of a process that owns a surface on the screen: visibility, opacity, stacking order, location,
/// focus.
///
/// Window keeps the properties of its surface and tells its listeners of every change; a subclass that is bound to a
/// compositor passes the change on first. An application derives from it, gives it a title and the four stacking
/// operations, and hands it to a WindowExec. The properties are plain values without a lock (see docs/threading.md).
class CORVANE_EXPORT Window : public Application, public virtual IWindow, public virtual IWindow::IWindowNotifier
{
public:
    using IWindow::bringForward;
    using IWindow::bringToFront;
    using IWindow::getLocation;
    using IWindow::getOpacity;
    using IWindow::getVisibility;
    using IWindow::getZOrder;
    using IWindow::handleEvent;
    using IWindow::handleFocus;
    using IWindow::isFocused;
    using IWindow::sendBackward;
    using IWindow::sendToBack;
    using IWindow::setLocation;
    using IWindow::setOpacity;
    using IWindow::setVisibility;
    using IWindow::setZOrder;
    using IWindow::IWindowListener::onLocationChange;
    using IWindow::IWindowListener::onOpacityChange;
    using IWindow::IWindowListener::onVisibilityChange;
    using IWindow::IWindowListener::onZOrderChange;

    /// Nice value of a window without focus.
    static const int DEFAULT_PRIORITY;
    /// Nice value of a window with focus. Deliberate: it is below an unfocused one.
    static const int FOCUSED_PRIORITY;

    /// Finds the window's launch parameters as Application does. On the command line the application type is required.
    /// Takes a reference on the process's input driver and, deliberately, never gives it back.
    /// @throws Exception  code 1 for a missing command line, application type, or a bad value of an option
    Window(int argc, char** argv);

    /// Initialises the application and sets DEFAULT_PRIORITY.
    void init() override;
    ~Window() override;

    void addListener(IListener* listener) override;
    void removeListener(IListener* listener) override;

    /// Gives or takes the focus: hides the cursor when it is lost, sets the priority, switches the mouse input, and
    /// tells the listeners, also when nothing changed.
    /// @throws Exception  code 7 when the system refuses the priority; the mouse and the listeners are then left out
    void handleFocus(bool focus) override;
    bool isFocused() override;
    /// Moves and shows the cursor for mouse events; ignores all others. Called on the input driver's thread.
    /// @return false: the window itself uses no event up
    bool handleEvent(const Event& event) override;

    /// The setters refuse nothing and tell the listeners also when the value is the same.
    void setVisibility(bool visibility) override;
    bool getVisibility() override;
    /// @param opacity  0 to 255. Deliberate: of a greater number only the low 8 bits are kept, and told.
    void setOpacity(unsigned int opacity) override;
    unsigned int getOpacity() override;
    void setZOrder(unsigned int zOrder) override;
    unsigned int getZOrder() override;
    void setLocation(const ISurfaceCompositing::Rect& location) override;
    ISurfaceCompositing::Rect getLocation() override;
    void bringToFront() override = 0;
    void sendToBack() override = 0;
    void bringForward() override = 0;
    void sendBackward() override = 0;

    /// Tell every window listener; overriding subclasses hear it first.
    void onFocusChange(const std::string& uid, const bool& oldIsFocused, const bool& newIsFocused) override;
    void onVisibilityChange(const std::string& uid, const bool& oldVisibility, const bool& newVisibility) override;
    void onOpacityChange(const std::string& uid, const unsigned int& oldOpacity,
                         const unsigned int& newOpacity) override;
    void onZOrderChange(const std::string& uid, const unsigned int& oldZOrder, const unsigned int& newZOrder) override;
    void onLocationChange(const std::string& uid, const ISurfaceCompositing::Rect& oldLocation,
                          const ISurfaceCompositing::Rect& newLocation) override;

    /// @return the window's own title, for the application's use
    virtual std::string getTitle() const = 0;
    /// A hook for applications; does nothing here.
    virtual void setInputWebSocketID(std::string& id, Window& window);

    const IWindowManager::LaunchParameters& getLaunchParameters() const;
    /// @return the process's input driver; lives until the process ends
    MultiInputDriver* getInputDriver();

protected:
    /// Finds the launch parameters of a window; see the constructor.
    static IWindowManager::LaunchParameters findLaunchParameters(int argc, char** argv);

private:
    template <class Call>
    void tellWindowListeners(Call call);

    IWindowManager::LaunchParameters launchParameters;
    MultiInputDriver* inputDriver; ///< a counted reference that is never given back

protected:
    /// The mouse cursor drawn for this window, or null. Not owned and never set by the library: a subclass that draws a
    /// cursor stores it here.
    ICursor* cursor;

private:
    std::vector<IWindow::IWindowListener*> windowListeners; ///< not owned, in the order of registration
    Mutex windowMutex;
    bool listenersChanged;
    bool cursorEnabled;
    bool focused;
    bool visible;
    std::uint8_t opacity;
    std::uint32_t zOrder;
    ISurfaceCompositing::Rect location;
};

} // namespace Corvane
