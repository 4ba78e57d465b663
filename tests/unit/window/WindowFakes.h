#pragma once

#include "FakePriority.h"
#include "Journal.h"
#include <corvane/Window.h>
#include <corvane/input/MultiInputDriver.h>
#include <corvane/interfaces/ICursor.h>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

using Rect = ISurfaceCompositing::Rect;

inline std::string text(bool value)
{
    return value ? "true" : "false";
}

inline std::string text(const Rect& rect)
{
    return rect.serialize();
}

/// A command line that lives as long as the test.
class Arguments
{
public:
    Arguments(std::initializer_list<std::string> texts) : texts(texts)
    {
        for (std::string& argument : this->texts)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
    }

    int count() const { return static_cast<int>(texts.size()); }
    char** values() { return pointers.data(); }

private:
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};

/// The real driver, with each call that it gets in the journal.
class RecordingDriver : public MultiInputDriver
{
public:
    ~RecordingDriver() override { journal.add("driver destroyed"); }

    void addInputEventListener(IWindowEvent::IInputEventListener* listener, unsigned int sessionIndex) override
    {
        journal.add("addInputEventListener(" + std::to_string(sessionIndex) + ")");
        MultiInputDriver::addInputEventListener(listener, sessionIndex);
    }
    void start() override
    {
        journal.add("start");
        MultiInputDriver::start();
    }
    void removeInputEventListener(IWindowEvent::IInputEventListener* listener) override
    {
        journal.add("removeInputEventListener");
        MultiInputDriver::removeInputEventListener(listener);
    }
    void enableHotplug() override
    {
        journal.add("enableHotplug");
        MultiInputDriver::enableHotplug();
    }
    void disableHotplug() override
    {
        journal.add("disableHotplug");
        MultiInputDriver::disableHotplug();
    }
    void enableMouse() override
    {
        journal.add("enableMouse");
        MultiInputDriver::enableMouse();
    }
    void disableMouse() override
    {
        journal.add("disableMouse");
        MultiInputDriver::disableMouse();
    }
    void enableKeyboard() override
    {
        journal.add("enableKeyboard");
        MultiInputDriver::enableKeyboard();
    }
    void disableKeyboard() override
    {
        journal.add("disableKeyboard");
        MultiInputDriver::disableKeyboard();
    }
    void enableIr() override
    {
        journal.add("enableIr");
        MultiInputDriver::enableIr();
    }
    void disableIr() override
    {
        journal.add("disableIr");
        MultiInputDriver::disableIr();
    }

    static unsigned int getReferences() { return references; }

    /// The shared driver of this process becomes a recording one: whoever takes the first reference chooses its class.
    static RecordingDriver* install() { return Singleton<InputDriver>::getInstance<RecordingDriver>(); }
};

/// A cursor that is somewhere and is shown or not; what it is told is in the journal.
class FakeCursor : public ICursor
{
public:
    using ICursor::getLocation;
    using ICursor::getOpacity;
    using ICursor::getVisibility;
    using ICursor::setLocation;
    using ICursor::setOpacity;
    using ICursor::setVisibility;

    void setVisibility(const unsigned int&, bool newVisibility) override
    {
        journal.add("cursor.setVisibility(" + text(newVisibility) + ")");
        visibility = newVisibility;
    }
    bool getVisibility(const unsigned int&) override { return visibility; }
    void setLocation(const unsigned int&, const Rect& newLocation) override
    {
        journal.add("cursor.setLocation(" + text(newLocation) + ")");
        location = newLocation;
    }
    Rect getLocation(const unsigned int&) override { return location; }
    void setOpacity(const unsigned int&, unsigned int) override {}
    unsigned int getOpacity(const unsigned int&) override { return 255; }
    void setZOrder(const unsigned int&, unsigned int) override {}
    unsigned int getZOrder(const unsigned int&) override { return 0; }
    void bringToFront(const unsigned int&) override {}
    void sendToBack(const unsigned int&) override {}
    void bringForward(const unsigned int&) override {}
    void sendBackward(const unsigned int&) override {}
    bool isCursorGlobal() override { return global; }
    void setCursorState(const CursorState& newState) override { state = newState; }
    CursorState getCursorState() override { return state; }

    bool global = true;
    bool visibility = true;
    Rect location{10, 20, 16, 24};
    CursorState state = CURSOR_STATE_NORMAL;
};

/// A window as an application makes one.
class TestWindow : public Window
{
public:
    using Window::cursor;
    using Window::findLaunchParameters;

    explicit TestWindow(Arguments given) : Window(given.count(), given.values()), arguments(std::move(given)) {}

    std::string getTitle() const override { return "Test"; }
    void bringToFront() override { journal.add("bringToFront"); }
    void sendToBack() override { journal.add("sendToBack"); }
    void bringForward() override { journal.add("bringForward"); }
    void sendBackward() override { journal.add("sendBackward"); }

private:
    const Arguments arguments;
};

/// Writes what it hears into the journal, under its name, and then does what the test wants.
class RecordingWindowListener : public IWindow::IWindowListener
{
public:
    using IWindow::IWindowListener::onLocationChange;
    using IWindow::IWindowListener::onOpacityChange;
    using IWindow::IWindowListener::onVisibilityChange;
    using IWindow::IWindowListener::onZOrderChange;

    explicit RecordingWindowListener(std::string name) : name(std::move(name)) {}

    void onKeepAlive(const std::string& uid, const std::string& state) override { hear("onKeepAlive", uid, state, ""); }
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override
    {
        hear("onStateChange", uid, oldState, newState);
    }
    void onFocusChange(const std::string& uid, const bool& oldValue, const bool& newValue) override
    {
        hear("onFocusChange", uid, text(oldValue), text(newValue));
    }
    void onVisibilityChange(const std::string& uid, const bool& oldValue, const bool& newValue) override
    {
        hear("onVisibilityChange", uid, text(oldValue), text(newValue));
    }
    void onOpacityChange(const std::string& uid, const unsigned int& oldValue, const unsigned int& newValue) override
    {
        hear("onOpacityChange", uid, std::to_string(oldValue), std::to_string(newValue));
    }
    void onZOrderChange(const std::string& uid, const unsigned int& oldValue, const unsigned int& newValue) override
    {
        hear("onZOrderChange", uid, std::to_string(oldValue), std::to_string(newValue));
    }
    void onLocationChange(const std::string& uid, const Rect& oldValue, const Rect& newValue) override
    {
        hear("onLocationChange", uid, text(oldValue), text(newValue));
    }

    /// Done once, by the next call.
    std::function<void()> action;

private:
    void hear(const char* operation, const std::string& uid, const std::string& oldValue, const std::string& newValue)
    {
        journal.add(name + "." + operation + "(" + uid + ", " + oldValue + ", " + newValue + ")");
        if (const std::function<void()> now = std::exchange(action, nullptr))
            now();
    }

    const std::string name;
};

/// A test with a shared recording driver, a fake nice value and an empty journal.
class WindowTest : public ::testing::Test
{
protected:
    WindowTest() : driver(RecordingDriver::install())
    {
        priority = {};
        journal.clear();
    }

    /// Gives back the reference of the test and, unlike the windows themselves, those of its windows.
    ~WindowTest() override
    {
        while (RecordingDriver::getReferences() > 0)
            delete driver;
        journal.clear();
    }

    ScopedEnvironment noParameters{"CORVANE_APP_PARAMETERS", nullptr};
    RecordingDriver* const driver;
};

} // namespace Corvane::Test
