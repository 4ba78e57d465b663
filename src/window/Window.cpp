#include <corvane/Window.h>

#include "WindowWalk.h"

#include <corvane/Foundation.h>
#include <corvane/input/MultiInputDriver.h>
#include <cstdlib>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "Window";

[[noreturn]] void throwInvalidParameter(const char* function, int line = __builtin_LINE())
{
    const Exception exception(RETURN_INVALID_PARAMETER);
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, "%s(): throwing exception: %s\n", function, exception.what());
    throw exception;
}

} // namespace

const int Window::DEFAULT_PRIORITY = 0;
const int Window::FOCUSED_PRIORITY = 5;

Window::Window(int argc, char** argv)
    : Application(argc, argv),
      launchParameters(findLaunchParameters(argc, argv)),
      // Deliberate: this reference is never given back, so the driver outlives every window.
      inputDriver(Singleton<InputDriver>::getInstance<MultiInputDriver>()),
      cursor(nullptr),
      windowMutex("Window", 0),
      listenersChanged(false),
      cursorEnabled(true),
      focused(false),
      visible(launchParameters.getCompositingParameters().getVisibility()),
      opacity(static_cast<std::uint8_t>(launchParameters.getCompositingParameters().getOpacity())),
      zOrder(launchParameters.getCompositingParameters().getZOrder()),
      location(launchParameters.getCompositingParameters().getLocation())
{
    if (launchParameters.getApplicationParameters().find("no-cursor") != std::string::npos)
        cursorEnabled = false;
}

void Window::init()
{
    Application::init();
    setPriority(DEFAULT_PRIORITY);
}

Window::~Window() = default;

IWindowManager::LaunchParameters Window::findLaunchParameters(int argc, char** argv)
{
    if (argc == 0 || argv == nullptr)
        throwInvalidParameter(__func__);
    if (const char* text = std::getenv("CORVANE_APP_PARAMETERS")) {
        Deserializer deserializer(text);
        return deserialize<IWindowManager::LaunchParameters>("", deserializer);
    }
    IWindowManager::LaunchParameters parameters(argc, argv);
    if (parameters.getApplicationType().empty()) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s is missing launchParameters\n", argv[0]);
        throwInvalidParameter(__func__);
    }
    return parameters;
}

void Window::addListener(IListener* listener)
{
    Application::addListener(listener);
    // Before the lock, as in Application: no fault of a stale pointer under it.
    auto* const windowListener = dynamic_cast<IWindow::IWindowListener*>(listener);
    addToWalk(windowMutex, windowListeners, listenersChanged, windowListener);
}

void Window::removeListener(IListener* listener)
{
    Application::removeListener(listener);
    auto* const windowListener = dynamic_cast<IWindow::IWindowListener*>(listener);
    removeFromWalk(windowMutex, windowListeners, listenersChanged, windowListener);
}

void Window::setVisibility(bool visibility)
{
    const bool oldVisibility = visible;
    visible = visibility;
    onVisibilityChange(getUid(), oldVisibility, visibility);
}

bool Window::getVisibility()
{
    return visible;
}

void Window::setOpacity(unsigned int newOpacity)
{
    const unsigned int oldOpacity = opacity;
    // Deliberate: the local copy has 8 bits; a compositor gets the whole number from a subclass that is bound to it.
    opacity = static_cast<std::uint8_t>(newOpacity);
    onOpacityChange(getUid(), oldOpacity, opacity);
}

unsigned int Window::getOpacity()
{
    return opacity;
}

void Window::setZOrder(unsigned int newZOrder)
{
    const unsigned int oldZOrder = zOrder;
    zOrder = newZOrder;
    onZOrderChange(getUid(), oldZOrder, newZOrder);
}

unsigned int Window::getZOrder()
{
    return zOrder;
}

void Window::setLocation(const ISurfaceCompositing::Rect& newLocation)
{
    const ISurfaceCompositing::Rect oldLocation = location;
    location = newLocation;
    onLocationChange(getUid(), oldLocation, newLocation);
}

ISurfaceCompositing::Rect Window::getLocation()
{
    return location;
}

void Window::onVisibilityChange(const std::string& uid, const bool& oldVisibility, const bool& newVisibility)
{
    tellWindowListeners([&](auto& listener) { listener.onVisibilityChange(uid, oldVisibility, newVisibility); });
}

void Window::onOpacityChange(const std::string& uid, const unsigned int& oldOpacity, const unsigned int& newOpacity)
{
    tellWindowListeners([&](auto& listener) { listener.onOpacityChange(uid, oldOpacity, newOpacity); });
}

void Window::onZOrderChange(const std::string& uid, const unsigned int& oldZOrder, const unsigned int& newZOrder)
{
    tellWindowListeners([&](auto& listener) { listener.onZOrderChange(uid, oldZOrder, newZOrder); });
}

void Window::onLocationChange(const std::string& uid, const ISurfaceCompositing::Rect& oldLocation,
                              const ISurfaceCompositing::Rect& newLocation)
{
    tellWindowListeners([&](auto& listener) { listener.onLocationChange(uid, oldLocation, newLocation); });
}

void Window::setInputWebSocketID(std::string& /*id*/, Window& /*window*/) {}

const IWindowManager::LaunchParameters& Window::getLaunchParameters() const
{
    return launchParameters;
}

MultiInputDriver* Window::getInputDriver()
{
    return inputDriver;
}

} // namespace Corvane
