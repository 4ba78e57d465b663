#include "ServerFakes.h"

/// How a server holds on to what it serves, and lets go of it.
namespace Corvane::Test
{

namespace
{

/// The least that makes an APPServer whole.
class BareServer : public APPServer
{
public:
    using APPServer::APPServer;
    using APPServer::getService;
    using APPServer::getWindow;
    using IWindow::IWindowListener::onLocationChange;
    using IWindow::IWindowListener::onOpacityChange;
    using IWindow::IWindowListener::onVisibilityChange;
    using IWindow::IWindowListener::onZOrderChange;

    void onKeepAlive(const std::string&, const std::string&) override { journal.add("heard keep-alive"); }
    void onFocusChange(const std::string&, const bool&, const bool&) override {}
    void onVisibilityChange(const std::string&, const bool&, const bool&) override {}
    void onOpacityChange(const std::string&, const unsigned int&, const unsigned int&) override {}
    void onZOrderChange(const std::string&, const unsigned int&, const unsigned int&) override
    {
        journal.add("heard z-order");
    }
    void onLocationChange(const std::string&, const Rect&, const Rect&) override {}
};

} // namespace

class APPServerTest : public WindowTest
{
protected:
    ServedWindow window{{"program", "--application-type=player", "--authorization-token=w"}};
    TestService service{{"program", "--authorization-token=s"}};
};

TEST_F(APPServerTest, ServesTheWindowThatItWasMadeFor)
{
    BareServer server(&window);

    EXPECT_EQ(server.getWindow(), &window);
    EXPECT_EQ(server.getService(), nullptr);
    EXPECT_EQ(server.getSingleton(), static_cast<IApplication*>(&window));
}

TEST_F(APPServerTest, ServesTheServiceThatItWasMadeFor)
{
    BareServer server(&service);

    EXPECT_EQ(server.getWindow(), nullptr);
    EXPECT_EQ(server.getService(), &service);
    EXPECT_EQ(dynamic_cast<TestService*>(server.getSingleton()), &service);
}

TEST_F(APPServerTest, HearsOfTheWindowOnceItIsInitialised)
{
    BareServer server(&window);
    server.init();

    window.setZOrder(1);
    window.onKeepAlive("w", "RUNNING");

    EXPECT_EQ(journal.read(), (Journal::Entries{"window.addListener", "heard z-order", "heard keep-alive"}));
}

TEST_F(APPServerTest, HearsOfTheServiceOnceItIsInitialised)
{
    {
        BareServer server(&service);
        server.init();
        service.onKeepAlive("s", "RUNNING");
    }
    service.onKeepAlive("s", "RUNNING");

    EXPECT_EQ(journal.read(), (Journal::Entries{"service.addListener", "heard keep-alive", "service.removeListener"}));
}

TEST_F(APPServerTest, HearsNothingBeforeItIsInitialisedAndIsTakenOffNevertheless)
{
    {
        BareServer server(&window);
        window.setZOrder(1);
        window.onKeepAlive("w", "RUNNING");
    }
    EXPECT_EQ(journal.read(), (Journal::Entries{"window.removeListener"}));
}

TEST_F(APPServerTest, IsNoLongerToldAfterItsDestruction)
{
    {
        BareServer server(&window);
        server.init();
    }
    journal.clear();

    window.setZOrder(1);
    window.onKeepAlive("w", "RUNNING");

    EXPECT_TRUE(journal.read().empty());
}

class TerminatedState : public APPServerTest, public ::testing::WithParamInterface<const std::string*>
{
};

TEST_P(TerminatedState, MakesTheServerForgetItsWindow)
{
    {
        BareServer server(&window);
        server.init();
        window.setState(*GetParam());

        EXPECT_EQ(server.getSingleton(), nullptr);
        EXPECT_EQ(server.getWindow(), nullptr);
        // The server leaves itself on the list; a window that is destroyed after it must not find it there.
        window.TestWindow::removeListener(&server);
        journal.clear();
    }
    EXPECT_TRUE(journal.read().empty());
}

TEST_P(TerminatedState, MakesTheServerForgetItsService)
{
    {
        BareServer server(&service);
        server.init();
        service.setState(*GetParam());

        EXPECT_EQ(server.getSingleton(), nullptr);
        EXPECT_EQ(server.getService(), nullptr);
        service.Application::removeListener(&server);
        journal.clear();
    }
    EXPECT_TRUE(journal.read().empty());
}

INSTANTIATE_TEST_SUITE_P(Terminated, TerminatedState,
                         ::testing::Values(&ILifecycleManagement::STATE_TERMINATED,
                                           &ILifecycleManagement::STATE_ABORTED, &ILifecycleManagement::STATE_RUNAWAY),
                         [](const auto& info) { return *info.param; });

TEST_F(APPServerTest, KeepsItsWindowInEveryOtherState)
{
    BareServer server(&window);
    server.init();

    for (const std::string& state :
         {ILifecycleManagement::STATE_LOADING, ILifecycleManagement::STATE_RUNNING,
          ILifecycleManagement::STATE_SUSPENDING, ILifecycleManagement::STATE_SUSPENDED,
          ILifecycleManagement::STATE_RESUMING, ILifecycleManagement::STATE_TERMINATING, std::string("my own")}) {
        window.setState(state);
        EXPECT_EQ(window.getState(), state);
        EXPECT_EQ(server.getWindow(), &window) << state;
    }
}

TEST_F(APPServerTest, LooksAtTheNewStateOnly)
{
    BareServer server(&window);

    server.onStateChange("w", ILifecycleManagement::STATE_TERMINATED, ILifecycleManagement::STATE_RUNNING);

    EXPECT_EQ(server.getWindow(), &window);
}

} // namespace Corvane::Test
