#include "WindowFakes.h"

#include <corvane/APPRPCServer.h>
#include <corvane/WindowExec.h>
#include <corvane/common/RPCClient.h>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <gmock/gmock.h>
#include <stdexcept>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <thread>

namespace Corvane::Test
{

/// A window whose steps are in the journal and fail or do what the test wants.
class ExecutedWindow : public TestWindow
{
public:
    using TestWindow::handleEvent;
    using TestWindow::TestWindow;

    void init() override
    {
        journal.add("window.init");
        if (failure)
            failure();
        TestWindow::init();
    }
    void run() override
    {
        journal.add("window.run");
        if (mainLoop)
            mainLoop();
    }
    bool handleEvent(const Event& event) override
    {
        events.put(dynamic_cast<const IWindowEvent::KeyEvent&>(event).getKeyCode());
        return true;
    }
    void addListener(IListener* listener) override
    {
        journal.add(std::string("addListener before ") + getState());
        TestWindow::addListener(listener);
    }
    void removeListener(IListener* listener) override
    {
        journal.add("window.removeListener");
        TestWindow::removeListener(listener);
    }

    std::function<void()> failure;
    std::function<void()> mainLoop;
    Mailbox<unsigned int> events;
};

class WindowExecTest : public WindowTest
{
protected:
    static constexpr const char* UID = "u1";

    static Arguments commandLine()
    {
        return {"program", "--application-type=player", "--authorization-token=u1", "--session-index=2"};
    }

    /// @return the names of the servers that live in the runtime folder of the test
    static std::vector<std::string> servers() { return RPCClient::listServers(); }

    TemporaryRuntime runtime;
    ScopedEnvironment notStandalone{"CORVANE_WINDOWEXEC_STANDALONE", nullptr};
    ExecutedWindow window{commandLine()};
};

TEST_F(WindowExecTest, RunsItsStepsInOrder)
{
    WindowExec exec(0, nullptr);

    exec.run(&window);

    EXPECT_EQ(journal.read(), (Journal::Entries{"addListener before UNINITIALIZED", "window.init", "setpriority(0)",
                                                "addInputEventListener(2)", "start", "enableHotplug", "window.run"}));
}

class StandaloneWindowExec : public WindowExecTest, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(StandaloneWindowExec, EnablesMouseKeyboardAndInfraredInThisOrder)
{
    ScopedEnvironment standalone("CORVANE_WINDOWEXEC_STANDALONE", GetParam());
    WindowExec exec(0, nullptr);

    exec.run(&window);

    const Journal::Entries entries = journal.read();
    ASSERT_GE(entries.size(), 5U);
    EXPECT_EQ(Journal::Entries(entries.end() - 5, entries.end()),
              (Journal::Entries{"enableHotplug", "enableMouse", "enableKeyboard", "enableIr", "window.run"}));
}

INSTANTIATE_TEST_SUITE_P(AnyValue, StandaloneWindowExec, ::testing::Values("", "1"),
                         [](const auto& info) { return std::string(*info.param == '\0' ? "Empty" : "One"); });

TEST_F(WindowExecTest, HasTheServerUpBeforeTheWindowIsInitialised)
{
    std::vector<std::string> found;
    std::string state;
    window.failure = [&] {
        found = servers();
        state = RPCClient("APPu1").call("IApplication::getState");
    };
    WindowExec exec(0, nullptr);

    exec.run(&window);

    EXPECT_EQ(found, std::vector<std::string>{"APPu1"});
    EXPECT_EQ(state, "\"UNINITIALIZED\"");
}

TEST_F(WindowExecTest, PassesTheInputOfTheWindowsSessionOn)
{
    unsigned int first = 0;
    window.mainLoop = [&] {
        driver->injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(1, true), 0);
        driver->injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(28, true), 2);
        window.events.take(first);
    };
    WindowExec exec(0, nullptr);

    exec.run(&window);

    EXPECT_EQ(first, 28U);
}

TEST_F(WindowExecTest, AnswersZeroWhateverTheWindowDidWithAnEvent)
{
    WindowExec exec(0, nullptr);
    exec.run(&window);

    EXPECT_EQ(exec.onInputEvent(IWindowEvent::KeyEvent(3, true)), 0);

    unsigned int code = 0;
    EXPECT_TRUE(window.events.take(code));
    EXPECT_EQ(code, 3U);
}

TEST_F(WindowExecTest, DropsAnEventBeforeItRuns)
{
    WindowExec exec(0, nullptr);

    EXPECT_EQ(exec.onInputEvent(IWindowEvent::KeyEvent(3, true)), 0);
}

TEST_F(WindowExecTest, DoesNothingWhenItIsDestroyedWithoutHavingRun)
{
    const unsigned int references = RecordingDriver::getReferences();
    {
        WindowExec exec(0, nullptr);
    }
    EXPECT_TRUE(journal.read().empty());
    EXPECT_EQ(RecordingDriver::getReferences(), references);
}

TEST_F(WindowExecTest, HoldsServerAndDriverUntilItIsDestroyed)
{
    const unsigned int references = RecordingDriver::getReferences();
    {
        WindowExec exec(0, nullptr);
        exec.run(&window);
        EXPECT_EQ(servers(), std::vector<std::string>{"APPu1"});
        EXPECT_EQ(RecordingDriver::getReferences(), references + 1);
        journal.clear();
    }
    EXPECT_EQ(journal.read(), (Journal::Entries{"removeInputEventListener", "window.removeListener"}));
    EXPECT_TRUE(servers().empty());
    EXPECT_EQ(RecordingDriver::getReferences(), references);
}

TEST_F(WindowExecTest, MakesNoCallOnAWindowThatHasTerminated)
{
    window.mainLoop = [this] { window.setState(ILifecycleManagement::STATE_TERMINATED); };
    {
        WindowExec exec(0, nullptr);
        exec.run(&window);
        journal.clear();
    }
    EXPECT_EQ(journal.read(), (Journal::Entries{"removeInputEventListener"}));
}

TEST_F(WindowExecTest, ReportsAStandardExceptionInOneLineAndPassesItOn)
{
    window.failure = [] { throw std::runtime_error("no surface"); };
    CapturedOutput error;
    std::string caught;
    {
        WindowExec exec(0, nullptr);
        try {
            exec.run(&window);
        } catch (const std::runtime_error& e) {
            caught = e.what();
        }
        EXPECT_EQ(servers(), std::vector<std::string>{"APPu1"});
    }
    EXPECT_TRUE(servers().empty());

    EXPECT_EQ(caught, "no surface");
    const std::vector<DebugLine> lines = error.getDebugLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].message, "catched exception: no surface");
    EXPECT_EQ(lines[0].level, 'E');
    EXPECT_EQ(lines[0].module, "WindowExec");
    EXPECT_EQ(lines[0].component, "WindowExec");
    EXPECT_EQ(lines[0].line, 96);
}

TEST_F(WindowExecTest, PassesAnyOtherExceptionOnWithoutALine)
{
    window.failure = [] { throw Exception(RETURN_INVALID_STATE); };
    CapturedOutput error;
    WindowExec exec(0, nullptr);

    EXPECT_THROW(exec.run(&window), Exception);

    EXPECT_TRUE(error.getDebugLines().empty());
}

TEST_F(WindowExecTest, RefusesCallsToAWindowThatFailed)
{
    window.failure = [] { throw Exception(RETURN_INVALID_STATE); };
    WindowExec exec(0, nullptr);
    EXPECT_THROW(exec.run(&window), Exception);

    EXPECT_THAT([] { RPCClient("APPu1").call("IApplication::getState"); },
                ::testing::ThrowsMessage<RPCError>("the server takes no calls any more"));
}

TEST_F(WindowExecTest, LetsTheManagersHearTheEndOfAWindowThatFailed)
{
    Mailbox<std::string> heard;
    WindowExec exec(0, nullptr);
    RPCClient client("APPu2");
    {
        ExecutedWindow mortal({"program", "--application-type=player", "--authorization-token=u2"});
        mortal.failure = [&] {
            client.subscribe({"IApplication::onStateChange"},
                             [&](const std::string&, const std::string& payload) { heard.put(payload); });
            throw std::runtime_error("no surface");
        };
        EXPECT_THROW(exec.run(&mortal), std::runtime_error);
    }

    std::string payload;
    ASSERT_TRUE(heard.take(payload));
    EXPECT_EQ(payload, R"({"uid":"u2","oldState":"UNINITIALIZED","newState":"TERMINATED"})");
}

TEST_F(WindowExecTest, ReportsAServerThatCannotComeUpAndTakesNoDriver)
{
    const unsigned int references = RecordingDriver::getReferences();
    APPRPCServer other(&window);
    other.init();
    journal.clear();
    CapturedOutput error;
    WindowExec exec(0, nullptr);

    EXPECT_THROW(exec.run(&window), RPCError);

    EXPECT_EQ(error.getMessages().size(), 1U);
    EXPECT_EQ(journal.read(), (Journal::Entries{"addListener before UNINITIALIZED"}));
    EXPECT_EQ(RecordingDriver::getReferences(), references);
}

TEST_F(WindowExecTest, SharesOneDriverWithAnotherAndDestroysItWithTheLast)
{
    ExecutedWindow second({"program", "--application-type=player", "--authorization-token=u2"});
    auto execOne = std::make_unique<WindowExec>(0, nullptr);
    auto execTwo = std::make_unique<WindowExec>(0, nullptr);
    execOne->run(&window);
    execTwo->run(&second);
    // What the test and the windows hold is given back, so that the two runners hold the last two references.
    while (RecordingDriver::getReferences() > 2)
        delete driver;
    journal.clear();

    execOne.reset();
    EXPECT_EQ(journal.read(), (Journal::Entries{"removeInputEventListener", "window.removeListener"}));
    driver->injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(5, true), 0);
    unsigned int code = 0;
    EXPECT_TRUE(second.events.take(code));
    EXPECT_EQ(code, 5U);

    execTwo.reset();
    EXPECT_EQ(journal.read().at(3), "driver destroyed");
    EXPECT_EQ(RecordingDriver::getReferences(), 0U);
}

class EndedMainLoop : public WindowExecTest, public ::testing::WithParamInterface<bool>
{
};

TEST_P(EndedMainLoop, IsFollowedByAWaitForTheHandlerThatRuns)
{
    /// Hears of the change that the remote call makes, on the server's thread, and stays in that call.
    RecordingWindowListener listener("a");
    Mailbox<bool> inHandler;
    Mailbox<bool> mayEnd;
    std::atomic<bool> handlerDone{false};
    listener.action = [&] {
        inHandler.put(true);
        bool ignored = false;
        mayEnd.take(ignored);
        // Were the run not waiting for this handler, it would return in this time.
        await([] { return false; }, std::chrono::milliseconds(200));
        handlerDone = true;
    };
    std::thread caller;
    window.mainLoop = [&] {
        window.addListener(&listener);
        caller = std::thread([] { RPCClient("APPu1").call("IWindow::setOpacity", R"({"opacity":1})"); });
        bool ignored = false;
        inHandler.take(ignored);
        mayEnd.put(true);
        if (GetParam())
            throw std::runtime_error("no picture");
    };
    WindowExec exec(0, nullptr);

    try {
        exec.run(&window);
    } catch (const std::runtime_error&) {
        EXPECT_TRUE(GetParam());
    }

    EXPECT_TRUE(handlerDone);
    caller.join();
    window.TestWindow::removeListener(&listener);
}

INSTANTIATE_TEST_SUITE_P(, EndedMainLoop, ::testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "ByAnException" : "ByItsReturn"); });

TEST_F(WindowExecTest, NamesTheProcessInItsDebugOutput)
{
    CapturedOutput error;
    WindowExec::runtimeInit("player");

    corvaneDebugPrint(DEBUG_ERROR, "Module", "Component", 1, "hello");

    const std::vector<DebugLine> lines = error.getDebugLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].process, "player");
}

} // namespace Corvane::Test
