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
        inputDriver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
        const ISurfaceManagement::CreationSettings settings = window->getLaunchParameters().getCompositingParameters();
        connectInput(settings.getSessionIndex());
        window->run();
        // The caller may destroy its window as soon as this returns, if that has terminated. A handler may still be at
        // work on it, the one that ended the main loop above all.
        if (ILifecycleManagement::isApplicationTerminated(window->getState()))
            disconnectInput();
        server->waitForHandler();
    } catch (const std::exception& e) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, FAILURE_LINE, "catched exception: %s", e.what());
        letGo();
        throw;
    } catch (...) {
        letGo();
        throw;
    }
}

void WindowExec::letGo()
{
    // The exception destroys the window on its way out, and what failed may have reached no terminated state that would
    // keep a call away from it. The managers still hear how it ends.
    disconnectInput();
    if (server != nullptr)
        server->endCalls();
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

void WindowExec::disconnectInput()
{
    // Deliberate: the driver's own operation, past the virtual table. The one removal that a driver sees which
    // overrides it is that of the destructor.
    if (inputDriver != nullptr)
        static_cast<MultiInputDriver*>(inputDriver)->MultiInputDriver::removeInputEventListener(this);
}

int WindowExec::onInputEvent(const IWindowEvent::InputEvent& event)
{
    if (window != nullptr)
        window->handleEvent(event);
    return 0;
}

} // namespace Corvane
