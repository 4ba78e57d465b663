#include "InputFixture.h"

#include <atomic>
#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <corvane/common/RPCClient.h>
#include <functional>
#include <optional>
#include <stdexcept>
#include <support/TemporaryDirectory.h>
#include <thread>

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
        if (handler)
            handler();
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
    std::function<void()> handler;
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
        hasReturned = true;
    }

    std::atomic<bool> hasReturned{false};
    TemporaryRuntime runtime;
    MockMachine machine;
    MockDevice remote{machine, onSeat(infrared(), "seat2")};
    MockDevice pointer{machine, onSeat(mouse(), "seat2")};
    std::optional<WindowExec> exec{std::in_place, 0, nullptr};
    TestedWindow window;
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

TEST_F(WindowInput, EndsWithTheMainLoopOfAWindowThatHasTerminated)
{
    run("", [&] {
        remote.press(KEY_OK);
        EXPECT_EQ(window.take(), "KEY_OK pressed");
        window.setState(ILifecycleManagement::STATE_TERMINATED);
    });
    InputRecorder other;
    window.getInputDriver()->addInputEventListener(&other, 2);

    remote.release(KEY_OK);

    EXPECT_EQ(other.take(), "KEY_OK released");
    EXPECT_TRUE(window.events.isEmpty());
    window.getInputDriver()->removeInputEventListener(&other);
}

TEST_F(WindowInput, GoesOnAfterTheMainLoopOfAWindowThatHasNotTerminated)
{
    run("", [] {});

    remote.press(KEY_OK);

    EXPECT_EQ(window.take(), "KEY_OK pressed");
}

TEST_F(WindowInput, IsHandledToTheEndBeforeTheMainRoutineReturns)
{
    std::atomic<bool> isHandled{false};
    window.handler = [&] {
        // Were nobody waiting for this very event, the main routine would have returned in this time.
        await([&] { return hasReturned.load(); }, std::chrono::milliseconds(200));
        isHandled = !hasReturned;
    };
    run("", [&] {
        remote.press(KEY_OK);
        EXPECT_EQ(window.take(), "KEY_OK pressed");
        window.setState(ILifecycleManagement::STATE_TERMINATED);
    });

    EXPECT_TRUE(isHandled);
}

TEST_F(WindowInput, EndsWithAMainLoopThatThrows)
{
    CapturedOutput error;
    EXPECT_THROW(run("", [] { throw std::runtime_error("no picture"); }), std::runtime_error);
    InputRecorder other;
    window.getInputDriver()->addInputEventListener(&other, 2);

    remote.press(KEY_OK);

    EXPECT_EQ(other.take(), "KEY_OK pressed");
    EXPECT_TRUE(window.events.isEmpty());
    window.getInputDriver()->removeInputEventListener(&other);
}

TEST_F(WindowInput, ReachesNoWindowThatIsDestroyedBeforeItsMainRoutine)
{
    ScopedEnvironment environment("CORVANE_WINDOWEXEC_STANDALONE", "");
    std::atomic<bool> done{false};
    std::thread hand([&] {
        while (!done) {
            remote.press(KEY_OK);
            remote.release(KEY_OK);
        }
    });
    // As in a main function: first the main routine, then the window, which so goes first.
    for (int i = 0; i < 20; ++i) {
        WindowExec routine(0, nullptr);
        TestedWindow passing;
        passing.mainLoop = [&] {
            EXPECT_NE(passing.take(), "nothing");
            passing.setState(ILifecycleManagement::STATE_TERMINATED);
        };
        routine.run(&passing);
    }
    done = true;
    hand.join();
}

} // namespace Corvane::Test
