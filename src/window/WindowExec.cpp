#include <corvane/WindowExec.h>

#include <corvane/APPRPCServer.h>
#include <corvane/Foundation.h>
#include <corvane/Window.h>
#include <corvane/input/MultiInputDriver.h>
#include <cstdlib>
#include <exception>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "WindowExec";

/// The source line that a failed run is reported under. Deliberate: a fixed number, whatever line the call stands on,
/// because the log analysis of the boxes finds this report by tag and line.
constexpr int FAILURE_LINE = 96;

/// Ends the input of a window whose main loop has ended, in whatever way, if its state is a terminated one: the window
/// may be destroyed then, and its control server has let go of it, too.
class InputEnd
{
public:
    InputEnd(MultiInputDriver& driver, IWindowEvent::IInputEventListener& listener, Window& window)
        : driver(driver), listener(listener), window(window)
    {
    }
    ~InputEnd()
    {
        // Deliberate: the driver's own operation, past the virtual table. The one removal that a driver sees which
        // overrides it is that of the listener's destructor.
        if (ILifecycleManagement::isApplicationTerminated(window.getState()))
            driver.MultiInputDriver::removeInputEventListener(&listener);
    }
    InputEnd(const InputEnd&) = delete;
    InputEnd& operator=(const InputEnd&) = delete;

private:
    MultiInputDriver& driver;
    IWindowEvent::IInputEventListener& listener;
    Window& window;
};

} // namespace

WindowExec::WindowExec(int argc, char** argv)
    : argc(argc), argv(argv), window(nullptr), server(nullptr), inputDriver(nullptr)
{
}

WindowExec::~WindowExec()
{
    if (inputDriver != nullptr) {
        inputDriver->removeInputEventListener(this);
        // Gives the reference back; the driver itself goes with the last one.
        delete inputDriver;
        inputDriver = nullptr;
    }
    delete server;
    server = nullptr;
}

void WindowExec::runtimeInit(const char* name)
{
    debugInitialize(name);
}

void WindowExec::run(Window* window)
{
    try {
        this->window = window;
        server = new APPRPCServer(window);
        server->init();
        window->init();
        MultiInputDriver* const driver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
        inputDriver = driver;
        const ISurfaceManagement::CreationSettings settings = window->getLaunchParameters().getCompositingParameters();
        const InputEnd end(*driver, *this, *window);
        connectInput(settings.getSessionIndex());
        window->run();
        // The caller may destroy its window as soon as this returns; a handler may still be at work on it, the one
        // that ended the main loop above all.
        server->waitForHandler();
    } catch (const std::exception& e) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, FAILURE_LINE, "catched exception: %s", e.what());
        throw;
    }
}

void WindowExec::connectInput(unsigned int sessionIndex)
{
    inputDriver->addInputEventListener(this, sessionIndex);
    inputDriver->start();
    inputDriver->enableHotplug();
    if (std::getenv("CORVANE_WINDOWEXEC_STANDALONE") == nullptr)
        return;
    inputDriver->enableMouse();
    inputDriver->enableKeyboard();
    inputDriver->enableIr();
}

int WindowExec::onInputEvent(const IWindowEvent::InputEvent& event)
{
    if (window != nullptr)
        window->handleEvent(event);
    return 0;
}

} // namespace Corvane
