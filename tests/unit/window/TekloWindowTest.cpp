#include <corvane/TekloWindow.h>

#include "FakeORUClient.h"
#include "WindowFakes.h"
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <set>
#include <support/CapturedOutput.h>

namespace Corvane::Test
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class TestTekloWindow : public TekloWindow
{
public:
    using Window::cursor;

    explicit TestTekloWindow(Arguments given) : TekloWindow(given.count(), given.values()), arguments(std::move(given))
    {
    }
    ~TestTekloWindow() override
    {
        if (journalsItsEnd)
            journal.add("~application's part");
    }

    std::string getTitle() const override { return "Test"; }

    bool journalsItsEnd = false;

private:
    const Arguments arguments;
};

/// A window with its own setClientId.
class PublishingWindow : public TestTekloWindow
{
public:
    using TestTekloWindow::TestTekloWindow;
    void setClientId(unsigned int id) override
    {
        journal.add("setClientId(" + std::to_string(id) + ")");
        // The surface can be used as soon as its id is told.
        journal.add("opacity " + std::to_string(getOpacity()));
        TestTekloWindow::setClientId(id);
    }
};

Arguments arguments()
{
    return {"/usr/bin/ORUplayer", "--application-type=test", "--authorization-token=player", "--opacity=200"};
}

class TekloWindowTest : public WindowTest
{
protected:
    TekloWindowTest() { manager = {}; }
    ~TekloWindowTest() override { EXPECT_EQ(manager.clients, 0) << "a client was not deleted"; }

    /// What the window asked of the client library, and only that.
    static Journal::Entries clientCalls()
    {
        Journal::Entries calls;
        for (const std::string& entry : journal.read())
            if (entry.starts_with("create") || entry.starts_with("client."))
                calls.push_back(entry);
        return calls;
    }

    static std::string environment(const char* name)
    {
        const char* const value = std::getenv(name);
        return value != nullptr ? value : "(not set)";
    }

    ScopedEnvironment noClientId{"clientid", nullptr};
    ScopedEnvironment noDirectFBClientId{"dfb_clientid", "what was there before"};
};

ReturnCode codeOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Exception& exception) {
        return exception.getCode();
    }
    return RETURN_SUCCESS;
}

} // namespace

TEST_F(TekloWindowTest, ContactsNobodyWhenItIsConstructed)
{
    const TestTekloWindow window(arguments());

    EXPECT_THAT(clientCalls(), IsEmpty());
    EXPECT_EQ(window.getClientId(), 0U);
}

TEST_F(TekloWindowTest, AcquiresItsSurfaceAfterItsOwnInitialisation)
{
    TestTekloWindow window(arguments());
    window.init();

    EXPECT_EQ(manager.createdType, 3U);
    EXPECT_THAT(journal.read(),
                ElementsAre("setpriority(0)", "create(3)", "client.init()",
                            "client.getResource(player, {\"sessionIndex\":0,\"location\":{\"x\":0,\"y\":0,\"width\":"
                            "1280,\"height\":720},\"zOrder\":0,\"opacity\":200,\"visibility\":true})"));
    EXPECT_EQ(window.getClientId(), 4U);
    EXPECT_EQ(environment("clientid"), "4");
    EXPECT_EQ(environment("dfb_clientid"), "4");
}

TEST_F(TekloWindowTest, PublishesTheClientIdThroughTheVirtualTable)
{
    PublishingWindow window(arguments());
    window.init();

    EXPECT_THAT(journal.read(), Contains("setClientId(4)"));
    EXPECT_THAT(journal.read(), Contains("opacity 255"));
}

TEST_F(TekloWindowTest, PublishesItsOwnIndexWhateverIdIsGiven)
{
    TestTekloWindow window(arguments());
    window.init();
    unsetenv("clientid");
    unsetenv("dfb_clientid");

    window.setClientId(999);

    EXPECT_EQ(environment("clientid"), "4");
    EXPECT_EQ(environment("dfb_clientid"), "4");
    EXPECT_EQ(window.getClientId(), 4U);
}

TEST_F(TekloWindowTest, WritesTheIndexAsUnsignedDecimal)
{
    manager.resourceIndex = 4294967295U;
    TestTekloWindow window(arguments());
    window.init();

    EXPECT_EQ(environment("clientid"), "4294967295");
}

TEST_F(TekloWindowTest, FailsWithCode7WhenNoSurfaceIsGranted)
{
    for (const unsigned int state : {0U, 1U, 2U, 4U}) {
        manager.tokenState = state;
        journal.clear();
        {
            TestTekloWindow window(arguments());
            CapturedOutput error;
            EXPECT_EQ(codeOf([&] { window.init(); }), RETURN_REFUSED_BY_SYSTEM);
            const std::vector<DebugLine> lines = error.getDebugLines();
            ASSERT_EQ(lines.size(), 2U);
            EXPECT_EQ(lines[0].module, "TekloWindow");
            EXPECT_EQ(lines[0].level, 'E');
            EXPECT_EQ(lines[0].message, "getResource IResourceAcquisition::RESOURCE_TYPE_GRAPHICS_WINDOW failed");
            EXPECT_EQ(lines[1].message, "init(): throwing exception: Generic failure");
            EXPECT_EQ(manager.clients, 1) << "the client stays until the window goes";
            EXPECT_EQ(environment("clientid"), "(not set)");
        }
        EXPECT_EQ(manager.clients, 0);
        EXPECT_THAT(clientCalls(), Not(Contains(HasSubstr("releaseResource")))) << state;
    }
}

TEST_F(TekloWindowTest, LetsAFailureOfTheClientLibraryThroughAndDeletesTheClient)
{
    for (const char* call : {"create", "init", "getResource"}) {
        manager.failingCall = call;
        journal.clear();
        {
            TestTekloWindow window(arguments());
            EXPECT_THROW(window.init(), std::runtime_error) << call;
            EXPECT_EQ(manager.clients, call == std::string("create") ? 0 : 1);
        }
        EXPECT_EQ(manager.clients, 0) << call;
        EXPECT_THAT(clientCalls(), Not(Contains(HasSubstr("releaseResource")))) << call;
    }
}

TEST_F(TekloWindowTest, ThrowsCode2FromEveryOperationOnItsSurfaceBeforeItHasOne)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.addListener(&listener);
    const std::function<void()> operations[] = {
        [&] { window.setVisibility(false); },
        [&] { window.getVisibility(); },
        [&] { window.setOpacity(1); },
        [&] { window.getOpacity(); },
        [&] { window.setZOrder(1); },
        [&] { window.getZOrder(); },
        [&] { window.setLocation(Rect(1, 2, 3, 4)); },
        [&] { window.getLocation(); },
        [&] { window.bringToFront(); },
        [&] { window.sendToBack(); },
        [&] { window.bringForward(); },
        [&] { window.sendBackward(); },
        // As a remote caller reaches it.
        [&] { static_cast<IWindow&>(window).setOpacity(std::string("caller"), 1U); },
    };
    std::set<int> lines;
    for (const auto& operation : operations) {
        CapturedOutput error;
        EXPECT_EQ(codeOf(operation), RETURN_INVALID_STATE);
        ASSERT_EQ(error.getMessages().size(), 1U);
        EXPECT_THAT(error.getMessages().front(), HasSubstr("(): throwing exception: Invalid state"));
        lines.insert(error.getDebugLines().front().line);
    }
    EXPECT_EQ(lines.size(), 12U) << "each operation logs a line of its own";
    EXPECT_THAT(journal.read(), IsEmpty()) << "no listener is told of what did not happen";
}

TEST_F(TekloWindowTest, ChangesTheCompositorThenItselfThenTellsTheListeners)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.init();
    window.addListener(&listener);
    journal.clear();

    window.setVisibility(false);
    window.setZOrder(7);
    window.setLocation(Rect(1, 2, 3, 4));

    const std::string before = text(Rect(0, 0, 1280, 720));
    const std::string after = text(Rect(1, 2, 3, 4));
    EXPECT_THAT(journal.read(),
                ElementsAre("client.setVisibility(4, false)", "listener.onVisibilityChange(player, true, false)",
                            "client.setZOrder(4, 7)", "listener.onZOrderChange(player, 0, 7)",
                            "client.setLocation(4, " + after + ")",
                            "listener.onLocationChange(player, " + before + ", " + after + ")"));
}

TEST_F(TekloWindowTest, SendsTheWholeOpacityAndKeepsTheLowEightBits)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.init();
    window.addListener(&listener);
    journal.clear();

    window.setOpacity(300);

    EXPECT_THAT(journal.read(), ElementsAre("client.setOpacity(4, 300)", "listener.onOpacityChange(player, 200, 44)"));
    EXPECT_EQ(window.Window::getOpacity(), 44U);
    EXPECT_EQ(window.getOpacity(), 300U);
}

TEST_F(TekloWindowTest, ReturnsWhatTheCompositorReports)
{
    TestTekloWindow window(arguments());
    window.init();
    manager.forcedZOrder = 3;
    window.setZOrder(7);
    manager.visibility = false;
    manager.opacity = 17;
    manager.location = Rect(5, 6, 7, 8);

    EXPECT_EQ(window.getZOrder(), 3U);
    EXPECT_FALSE(window.getVisibility());
    EXPECT_EQ(window.getOpacity(), 17U);
    EXPECT_EQ(text(window.getLocation()), text(Rect(5, 6, 7, 8)));
    EXPECT_EQ(window.Window::getZOrder(), 7U);
    EXPECT_TRUE(window.Window::getVisibility());
}

TEST_F(TekloWindowTest, LeavesItselfAloneWhenTheCompositorRefuses)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.init();
    window.addListener(&listener);
    journal.clear();
    manager.failingCall = "setZOrder";

    EXPECT_THROW(window.setZOrder(7), std::runtime_error);

    EXPECT_EQ(window.Window::getZOrder(), 0U);
    EXPECT_THAT(journal.read(), ElementsAre("client.setZOrder(4, 7)"));
}

/// A window whose manager answered no setter in time, and its listener.
class TekloWindowInDoubt : public TekloWindowTest
{
protected:
    TekloWindowInDoubt()
    {
        window->init();
        window->addListener(&listener);
        manager.opacity = 200;
        manager.answersNoSetters = true;
        EXPECT_THROW(window->setVisibility(false), RPCError);
        EXPECT_THROW(window->setOpacity(128), RPCError);
        EXPECT_THROW(window->setZOrder(7), RPCError);
        EXPECT_THROW(window->setLocation(Rect(1, 2, 3, 4)), RPCError);
        manager.answersNoSetters = false;
        journal.clear();
    }
    ~TekloWindowInDoubt() override { window.reset(); }

    /// What the manager does when it goes on.
    static void carryOut()
    {
        manager.visibility = false;
        manager.opacity = 128;
        manager.zOrder = 7;
        manager.location = Rect(1, 2, 3, 4);
    }
    void getAll()
    {
        window->getVisibility();
        window->getOpacity();
        window->getZOrder();
        window->getLocation();
    }
    /// @return what the listener heard so far
    static Journal::Entries heard()
    {
        Journal::Entries entries;
        for (const std::string& entry : journal.read())
            if (entry.starts_with("listener."))
                entries.push_back(entry);
        return entries;
    }

    RecordingWindowListener listener{"listener"};
    std::optional<TestTekloWindow> window{arguments()};
};

TEST_F(TekloWindowInDoubt, LearnsByItsNextGetterThatAChangeWasCarriedOutAfterAll)
{
    getAll();
    EXPECT_THAT(heard(), IsEmpty()) << "nothing has been carried out";
    EXPECT_EQ(window->Window::getOpacity(), 200U);

    carryOut();
    EXPECT_FALSE(window->getVisibility());
    EXPECT_EQ(window->getOpacity(), 128U);
    EXPECT_EQ(window->getZOrder(), 7U);
    EXPECT_EQ(text(window->getLocation()), text(Rect(1, 2, 3, 4)));

    EXPECT_THAT(heard(),
                ElementsAre("listener.onVisibilityChange(player, true, false)",
                            "listener.onOpacityChange(player, 200, 128)", "listener.onZOrderChange(player, 0, 7)",
                            "listener.onLocationChange(player, " + text(Rect(0, 0, 1280, 720)) + ", " +
                                text(Rect(1, 2, 3, 4)) + ")"));
    EXPECT_FALSE(window->Window::getVisibility());
    EXPECT_EQ(window->Window::getOpacity(), 128U);
    EXPECT_EQ(window->Window::getZOrder(), 7U);
    EXPECT_EQ(text(window->Window::getLocation()), text(Rect(1, 2, 3, 4)));

    journal.clear();
    getAll();
    EXPECT_THAT(heard(), IsEmpty()) << "told once";
}

TEST_F(TekloWindowInDoubt, KnowsAgainWhatHoldsAfterASetterThatWasAnswered)
{
    manager.forcedZOrder = 3;
    window->setZOrder(9);
    EXPECT_EQ(window->getZOrder(), 3U);

    EXPECT_THAT(heard(), ElementsAre("listener.onZOrderChange(player, 0, 9)"));
    EXPECT_EQ(window->Window::getZOrder(), 9U);
}

TEST_F(TekloWindowInDoubt, StaysInDoubtAfterASetterThatWasRefused)
{
    manager.failingCall = "setZOrder as refused";
    EXPECT_THROW(window->setZOrder(9), RPCError);
    carryOut();
    EXPECT_EQ(window->getZOrder(), 7U);

    EXPECT_THAT(heard(), ElementsAre("listener.onZOrderChange(player, 0, 7)"));
}

TEST_F(TekloWindowInDoubt, ComparesTheOpacityByTheBitsThatItKeeps)
{
    manager.opacity = 456;
    EXPECT_EQ(window->getOpacity(), 456U);
    EXPECT_THAT(heard(), IsEmpty()) << "200 are the low bits of 456";
}

TEST_F(TekloWindowInDoubt, LeavesItsDoubtsToNoOtherWindow)
{
    window.emplace(arguments());
    window->init();
    window->addListener(&listener);
    journal.clear();
    carryOut();
    getAll();

    EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(TekloWindowTest, IsInNoDoubtAfterAChangeThatWasRefused)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.init();
    window.addListener(&listener);
    manager.failingCall = "setZOrder as refused";
    EXPECT_THROW(window.setZOrder(7), RPCError);
    manager.zOrder = 3;
    journal.clear();

    EXPECT_EQ(window.getZOrder(), 3U);
    EXPECT_THAT(journal.read(), ElementsAre("client.getZOrder(4)"));
}

TEST_F(TekloWindowTest, PassesStackingOnAndTellsNobody)
{
    RecordingWindowListener listener("listener");
    TestTekloWindow window(arguments());
    window.init();
    window.addListener(&listener);
    journal.clear();

    window.bringToFront();
    window.sendToBack();
    window.bringForward();
    window.sendBackward();

    EXPECT_THAT(journal.read(), ElementsAre("client.bringToFront(4)", "client.sendToBack(4)", "client.bringForward(4)",
                                            "client.sendBackward(4)"));
}

TEST_F(TekloWindowTest, TranslatesTheCursorByTheCompositorsLocation)
{
    TestTekloWindow window(arguments());
    window.init();
    FakeCursor cursor;
    cursor.global = false;
    window.cursor = &cursor;
    manager.location = Rect(100, 50, 640, 360);
    Deserializer event("{\"event\":{\"type\":\"MouseEvent\",\"position\":{\"x\":3,\"y\":4}}}");

    window.handleEvent(*createSerialObject<IWindowEvent::InputEvent>("event", event));

    EXPECT_EQ(text(cursor.location), text(Rect(103, 54, 16, 24)));
}

TEST_F(TekloWindowTest, GivesTheSurfaceBackAndThenDeletesTheClientBeforeTheWindowGoes)
{
    {
        RecordingWindowListener listener("listener");
        TestTekloWindow window(arguments());
        window.journalsItsEnd = true;
        window.init();
        window.addListener(&listener);
        journal.clear();
    }
    EXPECT_THAT(journal.read(), ElementsAre("~application's part", "client.releaseResource(4)", "client.~client()",
                                            "listener.onStateChange(player, LOADING, TERMINATED)"));
}

TEST_F(TekloWindowTest, LogsAReleaseThatFailsAndGoesOn)
{
    for (const char* failure : {"releaseResource", "releaseResource with code 2"}) {
        CapturedOutput error;
        {
            TestTekloWindow window(arguments());
            window.init();
            manager.failingCall = failure;
        }
        EXPECT_EQ(manager.clients, 0) << failure;
        ASSERT_EQ(error.getMessages().size(), 1U);
        EXPECT_THAT(error.getMessages().front(), HasSubstr("releaseResource failed: "));
    }
}

TEST_F(TekloWindowTest, HasHooksThatDoNothing)
{
    TestTekloWindow window(arguments());
    window.init();
    journal.clear();
    std::string id = "socket";
    Deserializer event("{\"event\":{\"type\":\"MouseEvent\",\"position\":{\"x\":3,\"y\":4}}}");

    window.setInputWebSocketID(id, window);
    window.setCursorState(
        dynamic_cast<const IWindowEvent::MouseEvent&>(*createSerialObject<IWindowEvent::InputEvent>("event", event)));

    EXPECT_EQ(id, "socket");
    EXPECT_THAT(journal.read(), IsEmpty());
}

} // namespace Corvane::Test
