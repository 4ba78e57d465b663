#include "ServerFakes.h"

/// The methods of IApplication, which both flavours have.
namespace Corvane::Test
{

class ApplicationMethods : public ServerTest
{
};

TEST_F(ApplicationMethods, TellTheState)
{
    EXPECT_EQ(callText(windowServer, "IApplication", "getState"), resultText("\"UNINITIALIZED\""));
    service.setState("my \"own\"");
    EXPECT_EQ(callText(serviceServer, "IApplication", "getState"), resultText(R"("my \"own\"")"));
}

TEST_F(ApplicationMethods, IgnoreParametersThatTheyDoNotTake)
{
    EXPECT_EQ(callText(windowServer, "IApplication", "getState", R"({"requestedState":5,"x":[1]})"),
              resultText("\"UNINITIALIZED\""));
}

TEST_F(ApplicationMethods, SetTheState)
{
    EXPECT_EQ(callText(windowServer, "IApplication", "setState", R"({"requestedState":"RUNNING"})"),
              resultText("null"));
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_RUNNING);
}

TEST_F(ApplicationMethods, NeedAStateThatIsAText)
{
    for (const char* parameters : {"{}", R"({"requestedState":5})", R"({"requestedState":null})"}) {
        const Json reply = call(windowServer, "IApplication", "setState", parameters);
        EXPECT_NE(reply["error"]["message"].get<std::string>().find("requestedState"), std::string::npos) << reply;
    }
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_UNINITIALIZED);
}

TEST_F(ApplicationMethods, RefuseAStateOfMoreThan255Bytes)
{
    const auto setState = [this](const std::string& state) {
        return callText(windowServer, "IApplication", "setState", Json{{"requestedState", state}}.dump());
    };
    const std::string longest(255, 'x');
    EXPECT_EQ(setState(longest), resultText("null"));
    for (const std::string& longer : {longest + "x", std::string(128, 'x') + longest, longest.substr(1) + "\u00e4"})
        EXPECT_EQ(setState(longer), errorText("requestedState: longer than 255 bytes"));
    EXPECT_EQ(window.getState(), longest);
}

TEST_F(ApplicationMethods, SucceedAlsoWhenTheApplicationRefuses)
{
    EXPECT_EQ(callText(windowServer, "IApplication", "suspend"), resultText("null"));
    EXPECT_EQ(callText(windowServer, "IApplication", "activate"), resultText("null"));
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_UNINITIALIZED);
}

TEST_F(ApplicationMethods, DriveTheLifecycle)
{
    window.setState(ILifecycleManagement::STATE_RUNNING);

    call(windowServer, "IApplication", "suspend");
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_SUSPENDING);
    call(windowServer, "IApplication", "setState", R"({"requestedState":"SUSPENDED"})");
    call(windowServer, "IApplication", "activate");
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_RESUMING);
    call(windowServer, "IApplication", "terminate");
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_TERMINATING);
}

TEST_F(ApplicationMethods, RunTheOverridesOfASubclass)
{
    struct OwnWindow : TestWindow {
        using TestWindow::activate;
        using TestWindow::suspend;
        using TestWindow::terminate;
        using TestWindow::TestWindow;
        void activate() override { journal.add("own activate"); }
        void suspend() override { journal.add("own suspend"); }
        void terminate() override { journal.add("own terminate"); }
    };
    OwnWindow own({"program", "--application-type=player"});
    APPRPCServer server(&own);

    for (const char* method : {"activate", "suspend", "terminate"})
        EXPECT_EQ(callText(server, "IApplication", method), resultText("null"));

    EXPECT_EQ(journal.read(), (Journal::Entries{"own activate", "own suspend", "own terminate"}));
}

TEST_F(ApplicationMethods, TellTheRuntimeStatistics)
{
    ScopedEnvironment hostName("CORVANE_APP_HOSTNAME", "box");

    const Json statistics = call(windowServer, "IApplication", "getRuntimeStatistics")["result"];

    EXPECT_EQ(statistics["processName"], "program");
    EXPECT_EQ(statistics["hostName"], "box");
    EXPECT_GT(statistics["maxResidentSet"], 0);
    EXPECT_EQ(statistics.size(), 8U);
}

TEST_F(ApplicationMethods, TellNoStatisticsAtAllWhenTheyFail)
{
    struct OwnWindow : TestWindow {
        using TestWindow::getRuntimeStatistics;
        using TestWindow::TestWindow;
        RuntimeStatistics getRuntimeStatistics() override { throw std::runtime_error("no statistics"); }
    };
    OwnWindow own({"program", "--application-type=player"});
    APPRPCServer server(&own);

    EXPECT_EQ(callText(server, "IApplication", "getRuntimeStatistics"), errorText("no statistics"));
}

} // namespace Corvane::Test
