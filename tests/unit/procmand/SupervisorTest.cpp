#include "RunningSupervisor.h"

#include <corvane/common/RPCServer.h>
#include <corvane/foundation/ValueObjects.h>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Procmand
{
namespace
{

using Corvane::Test::await;
using testing::HasSubstr;

constexpr std::chrono::milliseconds KEEP_ALIVE_DEADLINE{2000};
constexpr std::chrono::milliseconds ABORT_DEADLINE{300};

/// A control server that tells a state and never proves that anyone lives.
class QuietServer : public Corvane::RPCServer
{
public:
    QuietServer() : RPCServer("APPquiet")
    {
        interfaces["IApplication"]["getState"] = static_cast<Handler>(&QuietServer::getState);
    }
    ~QuietServer() override { shutdown(); }

private:
    std::string getState(const Corvane::IRPC::RPCSynchronousMethodObject& request)
    {
        return Corvane::IRPC::RPCResultObject(request, Corvane::StringObject(std::string("RUNNING"))).serialize();
    }
};

/// What the process manager has announced. It outlives what fills it.
struct Heard {
    Corvane::Test::Mailbox<std::pair<std::string, std::string>> notices;
};

/// A supervisor that listens to its application.
class SupervisorTest : public testing::Test, protected Heard, protected RunningSupervisor
{
protected:
    SupervisorTest()
        : RunningSupervisor(Settings{.keepAliveDeadline = KEEP_ALIVE_DEADLINE, .abortDeadline = ABORT_DEADLINE},
                            [this](const std::string& name, const std::string& payload) {
                                notices.put({name, payload});
                            })
    {
        EXPECT_TRUE(await([this] {
            std::lock_guard guard(box.lock);
            return box.registry.require("tester").isConnected;
        }));
    }

    /// Waits for a notification of the process manager. @return its payload
    std::string awaitNotice(const std::string& name)
    {
        std::pair<std::string, std::string> notice;
        while (notices.take(notice))
            if (notice.first == "IApplicationManager::" + name)
                return notice.second;
        return "nothing";
    }
};

} // namespace

TEST_F(SupervisorTest, GivesTheApplicationsTheirWholeTimeAgainWhenItWasHeldUpItself)
{
    std::chrono::steady_clock::time_point released;
    {
        // Nothing in the box goes on while somebody has its lock.
        std::lock_guard guard(box.lock);
        std::this_thread::sleep_for(KEEP_ALIVE_DEADLINE + std::chrono::milliseconds(1500));
        released = std::chrono::steady_clock::now();
    }
    EXPECT_THAT(awaitNotice("onRunaway"), HasSubstr("tester"));
    EXPECT_GE(std::chrono::steady_clock::now() - released, KEEP_ALIVE_DEADLINE);
}

TEST_F(SupervisorTest, WaitsForTheLastWordsOfAProcessThatHasEnded)
{
    child.sendSignal(SIGKILL);
    ASSERT_TRUE(await([this] {
        std::lock_guard guard(box.lock);
        const ManagedApplication* const application = box.registry.find("tester");
        return application == nullptr || application->end;
    }));
    server.handleRPCNotification("IApplication::onStateChange",
                                 R"({"uid":"tester","oldState":"RUNNING","newState":"ABORTED"})");
    server.shutdown();

    EXPECT_THAT(awaitNotice("onEnd"), HasSubstr(R"("state":"ABORTED","previousState":"RUNNING")"));
}

TEST_F(SupervisorTest, AnnouncesTheKeepAliveThatCameBeforeItListened)
{
    QuietServer quiet;
    quiet.init();
    {
        std::lock_guard guard(box.lock);
        supervisor.adopt("quiet", Process::find(child.getPid(), false).value());
    }
    std::pair<std::string, std::string> notice;
    do
        ASSERT_TRUE(notices.take(notice));
    while (notice.first != "IApplication::onKeepAlive");
    EXPECT_EQ(notice.second, R"({"uid":"quiet","state":"RUNNING"})");
}

TEST_F(SupervisorTest, TakesAKeepAliveThatSaysAbortedForNoSignOfLife)
{
    const auto start = std::chrono::steady_clock::now();
    server.handleRPCNotification("IApplication::onKeepAlive", R"({"uid":"tester","state":"ABORTED"})");

    EXPECT_THAT(awaitNotice("onRunaway"), HasSubstr("tester"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, KEEP_ALIVE_DEADLINE);
    server.shutdown();
    EXPECT_THAT(awaitNotice("onEnd"), HasSubstr(R"("signal":9,"state":"ABORTED")"));
}

TEST_F(SupervisorTest, LeavesOneAloneThatHasAbortedAndRunsAgain)
{
    server.handleRPCNotification("IApplication::onStateChange",
                                 R"({"uid":"tester","oldState":"RUNNING","newState":"ABORTED"})");
    server.handleRPCNotification("IApplication::onStateChange",
                                 R"({"uid":"tester","oldState":"ABORTED","newState":"RUNNING"})");
    const auto start = std::chrono::steady_clock::now();

    EXPECT_THAT(awaitNotice("onRunaway"), HasSubstr("tester")) << "it is silent after that";
    EXPECT_GT(std::chrono::steady_clock::now() - start, KEEP_ALIVE_DEADLINE / 2);
}

TEST_F(SupervisorTest, TellsFromItsLastSignHowLongAnApplicationIsSilent)
{
    // The last sign comes in the middle of the time that began with the first one.
    std::chrono::steady_clock::time_point lastSign;
    for (int i = 0; i < 4; ++i) {
        std::this_thread::sleep_for(KEEP_ALIVE_DEADLINE / 4);
        lastSign = std::chrono::steady_clock::now();
        server.handleRPCNotification("IApplication::onKeepAlive", R"({"uid":"tester","state":"RUNNING"})");
    }
    EXPECT_THAT(awaitNotice("onRunaway"), HasSubstr("tester"));
    EXPECT_GE(std::chrono::steady_clock::now() - lastSign, KEEP_ALIVE_DEADLINE);
}

} // namespace Procmand
