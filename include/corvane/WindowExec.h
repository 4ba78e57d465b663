#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IWindowEvent.h>

namespace Corvane
{

class APPRPCServer;
class InputDriver;
class Window;

/// The ready-made main routine of a window application.
///
///     int main(int argc, char** argv)
///     {
///         Corvane::WindowExec::runtimeInit("player");
///         Corvane::WindowExec exec(argc, argv);
///         PlayerWindow window(argc, argv);
///         exec.run(&window);
///     }
///
/// Main thread only, but for `onInputEvent`.
class CORVANE_EXPORT WindowExec : public virtual IWindowEvent::IInputEventListener
{
public:
    /// @param argv  not copied
    WindowExec(int argc, char** argv);
    WindowExec(const WindowExec&) = delete;
    WindowExec& operator=(const WindowExec&) = delete;
    /// Stops input and takes the control server down. The window is the caller's.
    ~WindowExec() override;

    /// Names the process in its debug output; to be called before anything is printed.
    static void runtimeInit(const char* name);

    /// Brings up the window's control server, initialises the window, connects the input driver to it, and runs the
    /// window's main loop until that returns. Once a WindowExec.
    ///
    /// With the environment variable CORVANE_WINDOWEXEC_STANDALONE (any value) mouse, keyboard and infrared input are
    /// enabled at once; without it, whoever manages the box enables them with the focus.
    ///
    /// A window whose state is a terminated one when this ends may be destroyed at once: this has waited for an event
    /// and a remote call that the window was handling, and no further one comes. Any other window outlives the
    /// WindowExec.
    /// @throws whatever a step throws, after one debug line for a `std::exception`. The window may be destroyed then,
    ///         whatever its state: it gets no input any more, and the control server refuses all calls.
    void run(Window* window);

    /// Passes the event to the window; called on the input driver's thread. @return 0
    int onInputEvent(const IWindowEvent::InputEvent& event) override;

private:
    void connectInput(unsigned int sessionIndex);
    void disconnectInput();
    void letGo();

    [[maybe_unused]] int argc;    ///< kept, not read again
    [[maybe_unused]] char** argv; ///< kept, not read again
    Window* window;
    APPRPCServer* server;     ///< owned
    InputDriver* inputDriver; ///< a counted reference
};

} // namespace Corvane
