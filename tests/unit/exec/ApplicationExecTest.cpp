#include "ExecFakes.h"

#include <corvane/APPRPCServer.h>
#include <corvane/ApplicationExec.h>
#include <corvane/common/RPCClient.h>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Corvane::Test
{

namespace
{

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr const char* TOKEN = R"({"authAttrInternal":"{}","token":7})";

/// A step that can fail.
using Step = std::function<void()> SteppingApplication::*;

class ApplicationExecTest : public testing::Test
{
protected:
    ApplicationExecTest() { journal.clear(); }

    /// @return the names of the servers that live in the runtime folder of the test
    static std::vector<std::string> servers() { return RPCClient::listServers(); }
    /// Runs a service that is destroyed before its runner. @return what a manager that subscribes in the step hears
    /// next
    std::string hearEnd(Step step, bool fails);

    TemporaryRuntime runtime;
    ScopedEnvironment noParameters{"CORVANE_APP_PARAMETERS", nullptr};
    // A program of this name does without a process manager, and so does not complain of its absence.
    std::string program = "program-QAX";
    std::string uid = "--authorization-token=u1";
    std::vector<char*> arguments{program.data(), uid.data(), nullptr};
    SteppingService service{2, arguments.data()};
    SteppingApplication plain{2, arguments.data()};
};

std::string ApplicationExecTest::hearEnd(Step step, bool fails)
{
    uid.back() = '2';
    Mailbox<std::string> heard;
    ApplicationExec exec;
    RPCClient client("APPu2");
    {
        SteppingService mortal(2, arguments.data());
        mortal.*step = [&] {
            client.subscribe({"IApplication::onStateChange"},
                             [&](const std::string&, const std::string& payload) { heard.put(payload); });
            if (fails)
                throw Exception(RETURN_INVALID_STATE);
        };
        try {
            exec.run(&mortal);
            EXPECT_FALSE(fails);
        } catch (const Exception&) {
            EXPECT_TRUE(fails);
        }
    }
    std::string payload;
    EXPECT_TRUE(heard.take(payload));
    return payload;
}

} // namespace

TEST_F(ApplicationExecTest, RunsTheStepsOfAServiceInOrder)
{
    ApplicationExec exec;

    exec.run(&service);

    EXPECT_THAT(journal.read(), ElementsAre("addListener in UNINITIALIZED", "init", "run"));
}

TEST_F(ApplicationExecTest, HasTheServerUpBeforeTheServiceIsInitialised)
{
    std::vector<std::string> found;
    std::string state;
    service.beforeInit = [&] {
        found = servers();
        state = RPCClient("APPu1").call("IApplication::getState");
    };
    ApplicationExec exec;

    exec.run(&service);

    EXPECT_THAT(found, ElementsAre("APPu1"));
    EXPECT_EQ(state, "\"UNINITIALIZED\"");
}

TEST_F(ApplicationExecTest, PassesTokensOnWhileTheServiceRuns)
{
    service.mainLoop = [] {
        RPCClient client("APPu1");
        client.call("IService::authorizationTokenCreation", TOKEN);
        client.call("IService::authorizationTokenDeletion", R"({"token":7})");
    };
    ApplicationExec exec;

    exec.run(&service);

    EXPECT_THAT(journal.read(), ElementsAre("addListener in UNINITIALIZED", "init", "run", "create 7", "delete 7"));
}

TEST_F(ApplicationExecTest, RunsAPlainApplicationWithoutAServer)
{
    std::vector<std::string> found{"nobody looked"};
    plain.mainLoop = [&] { found = servers(); };
    ApplicationExec exec;

    exec.run(&plain);

    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(journal.read(), ElementsAre("init", "run"));
    EXPECT_EQ(plain.getState(), ILifecycleManagement::STATE_LOADING);
}

TEST_F(ApplicationExecTest, DoesNothingWhenItIsDestroyedWithoutHavingRun)
{
    {
        ApplicationExec exec;
    }

    EXPECT_THAT(journal.read(), IsEmpty());
    EXPECT_THAT(servers(), IsEmpty());
}

TEST_F(ApplicationExecTest, HoldsTheServerUntilItIsDestroyed)
{
    {
        ApplicationExec exec;
        exec.run(&service);
        EXPECT_THAT(servers(), ElementsAre("APPu1"));
    }

    EXPECT_THAT(servers(), IsEmpty());
    EXPECT_EQ(journal.read().back(), "removeListener");
}

TEST_F(ApplicationExecTest, MakesNoCallOnAServiceThatHasTerminated)
{
    service.mainLoop = [this] { service.setState(ILifecycleManagement::STATE_TERMINATED); };
    {
        ApplicationExec exec;
        exec.run(&service);
    }

    EXPECT_EQ(journal.read().back(), "run");
}

TEST_F(ApplicationExecTest, LetsTheManagersHearTheEndOfAServiceThatIsDestroyedFirst)
{
    EXPECT_EQ(hearEnd(&SteppingApplication::mainLoop, false),
              R"({"uid":"u2","oldState":"LOADING","newState":"TERMINATED"})");
}

class FailingStep : public ApplicationExecTest, public testing::WithParamInterface<Step>
{
protected:
    static void callService() { RPCClient("APPu1").call("IApplication::getState"); }
};

TEST_P(FailingStep, IsReportedInOneLineAndPassedOnWithTheCallsEnded)
{
    service.*GetParam() = [] { throw std::runtime_error("no sound card"); };
    CapturedOutput error;
    ApplicationExec exec;
    std::string caught;

    try {
        exec.run(&service);
    } catch (const std::runtime_error& e) {
        caught = e.what();
    }

    EXPECT_EQ(caught, "no sound card");
    EXPECT_THAT(callService, ThrowsMessage<RPCError>("the server takes no calls any more"));
    const std::vector<DebugLine> lines = error.getDebugLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].message, "caught exception: no sound card");
    EXPECT_EQ(lines[0].level, 'E');
    EXPECT_EQ(lines[0].module, "ApplicationExec");
    EXPECT_EQ(lines[0].component, "ApplicationExec");
}

TEST_P(FailingStep, OfAPlainApplicationIsReportedInOneLineAndPassedOn)
{
    plain.*GetParam() = [] { throw std::runtime_error("no sound card"); };
    CapturedOutput error;
    ApplicationExec exec;

    EXPECT_THROW(exec.run(&plain), std::runtime_error);

    EXPECT_THAT(error.getMessages(), ElementsAre("caught exception: no sound card"));
}

TEST_P(FailingStep, ThatThrowsAnythingElsePassesOnWithoutALine)
{
    service.*GetParam() = [] { throw Exception(RETURN_INVALID_STATE); };
    CapturedOutput error;
    ApplicationExec exec;

    EXPECT_THROW(exec.run(&service), Exception);

    EXPECT_THAT(error.getDebugLines(), IsEmpty());
    EXPECT_THAT(callService, ThrowsMessage<RPCError>("the server takes no calls any more"));
}

TEST_P(FailingStep, IsFollowedByTheEndWhichTheManagersHear)
{
    EXPECT_THAT(hearEnd(GetParam(), true), EndsWith(R"("newState":"TERMINATED"})"));
}

INSTANTIATE_TEST_SUITE_P(, FailingStep,
                         testing::Values<Step>(&SteppingApplication::beforeInit, &SteppingApplication::mainLoop),
                         [](const auto& info) { return std::string(info.index == 0 ? "Init" : "Run"); });

TEST_F(ApplicationExecTest, ReportsAServerThatCannotComeUpAndLeavesTheServiceUninitialised)
{
    APPRPCServer other(&service);
    other.init();
    CapturedOutput error;
    ApplicationExec exec;

    EXPECT_THROW(exec.run(&service), RPCError);

    EXPECT_EQ(error.getMessages().size(), 1U);
    EXPECT_EQ(service.getState(), ILifecycleManagement::STATE_UNINITIALIZED);
    EXPECT_THAT(servers(), ElementsAre("APPu1")) << "the one that was there before";
}

TEST_F(ApplicationExecTest, WaitsForAHandlerThatRunsWhenTheMainLoopHasEnded)
{
    Mailbox<bool> inHandler;
    Mailbox<bool> mayEnd;
    std::atomic<bool> handlerDone{false};
    service.onCreation = [&] {
        inHandler.put(true);
        bool ignored = false;
        mayEnd.take(ignored);
        // Were the run not waiting for this handler, it would return in this time.
        await([] { return false; }, std::chrono::milliseconds(200));
        handlerDone = true;
    };
    std::jthread caller;
    service.mainLoop = [&] {
        caller = std::jthread([] { RPCClient("APPu1").call("IService::authorizationTokenCreation", TOKEN); });
        bool ignored = false;
        inHandler.take(ignored);
        mayEnd.put(true);
    };
    ApplicationExec exec;

    exec.run(&service);

    EXPECT_TRUE(handlerDone);
}

TEST_F(ApplicationExecTest, NamesTheProcessInItsDebugOutput)
{
    CapturedOutput error;
    ApplicationExec::runtimeInit("volume");

    corvaneDebugPrint(DEBUG_ERROR, "Module", "Component", 1, "hello");

    const std::vector<DebugLine> lines = error.getDebugLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].process, "volume");
}

} // namespace Corvane::Test
