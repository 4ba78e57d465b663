#include "InputFixture.h"

#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <corvane/common/RPCClient.h>
#include <functional>
#include <optional>
#include <support/TemporaryDirectory.h>

/// From a device to the window of an application, with all that lies between.
namespace Corvane::Test
{

namespace
{

/// The command line of a window application.
struct CommandLine {
    std::string texts[4] = {"program", "--application-type=player", "--authorization-token=u1", "--session-index=2"};
    char* pointers[5] = {texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(), nullptr};
};

/// A window whose main loop is the test.
class TestedWindow : private CommandLine, public Window
{
public:
    TestedWindow() : Window(4, pointers) {}

    void run() override { mainLoop(); }
    bool handleEvent(const Event& event) override
    {
        events.put(eventText(dynamic_cast<const IWindowEvent::InputEvent&>(event)));
        return true;
    }
    std::string getTitle() const override { return "Tested"; }
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}

    std::string take()
    {
        std::string text = "nothing";
        events.take(text);
        return text;
    }

    Mailbox<std::string> events;
    std::function<void()> mainLoop;
};

/// Gives back the references that windows keep.
struct SharedDriver : MultiInputDriver {
    static void destroy()
    {
        while (references > 0)
            delete instance.load();
    }
};

class WindowInput : public ::testing::Test
{
protected:
    ~WindowInput() override
    {
        exec.reset();
        SharedDriver::destroy();
    }

    /// Runs the application; `mainLoop` is its main loop.
    void run(const char* standalone, std::function<void()> mainLoop)
    {
        ScopedEnvironment environment("CORVANE_WINDOWEXEC_STANDALONE", standalone);
        window.mainLoop = std::move(mainLoop);
        exec->run(&window);
    }

    TemporaryRuntime runtime;
    MockMachine machine;
    MockDevice remote{machine, onSeat(infrared(), "seat2")};
    MockDevice pointer{machine, onSeat(mouse(), "seat2")};
    TestedWindow window;
    std::optional<WindowExec> exec{std::in_place, 0, nullptr}; ///< goes before the window: it passes events on to it
};

} // namespace

TEST_F(WindowInput, ReachesTheWindowOfItsSession)
{
    MockDevice elsewhere(machine, infrared());
    run("", [&] {
        elsewhere.press(KEY_UP);
        remote.press(KEY_OK);
        EXPECT_EQ(window.take(), "KEY_OK pressed");
        remote.release(KEY_OK);
        EXPECT_EQ(window.take(), "KEY_OK released");
        pointer.report({{EV_REL, REL_X, 1}});
        EXPECT_EQ(window.take(), "mouse by 1,0,0");
    });
}

TEST_F(WindowInput, ComesFromDevicesThatArePluggedInLater)
{
    run("", [&] {
        MockDevice later(machine, onSeat(keyboard(), "seat2"));
        later.press(KEY_X);
        EXPECT_EQ(window.take(), "'x' pressed");
    });
}

TEST_F(WindowInput, DoesNotComeBeforeItsClassIsEnabled)
{
    run(nullptr, [&] {
        auto* const driver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
        remote.press(KEY_OK);
        RPCClient("APPu1").call("IWindow::handleFocus", R"({"obtained":true})");
        pointer.report({{EV_REL, REL_X, 1}});
        EXPECT_EQ(window.take(), "mouse by 1,0,0");
        EXPECT_FALSE(remote.isOpen());
        EXPECT_TRUE(window.events.isEmpty());

        driver->enableIr();

        // The mock device, unlike a real one, keeps what was pressed while it was closed.
        EXPECT_EQ(window.take(), "KEY_OK pressed");
        delete driver;
    });
}

} // namespace Corvane::Test
