#include "DrivenProcess.h"

#include <atomic>
#include <csignal>
#include <gmock/gmock.h>
#include <support/Await.h>
#include <support/TaskState.h>
#include <thread>

namespace Corvane::Test
{

namespace
{

/// @return the event that asks the window to die in a way; see DrivenWindow.cpp
std::string pressOf(int way)
{
    return R"({"event":{"type":"KeyEvent","keyCode":)" + std::to_string(way) + R"(,"pressed":true}})";
}

/// What a death by each signal must look like from outside.
struct Death {
    int signal;
    bool backTrace;
};

void PrintTo(const Death& death, std::ostream* stream)
{
    *stream << sigabbrev_np(death.signal);
}

class DyingWindow : public DrivenProcess, public testing::WithParamInterface<Death>
{
protected:
    bool isMainThreadAsleep() const { return readTaskState("/proc/" + std::to_string(process.getPid())) == 'S'; }
    void expectAnnouncedDeath(Announcements& announcements)
    {
        EXPECT_EQ(announcements.untilGone(), std::vector<std::string>{changeOf("RUNNING", "ABORTED")});
        EXPECT_EQ(process.wait().signal, GetParam().signal);
        const std::string output = process.getOutput();
        EXPECT_EQ(output.find("Obtained ") != output.npos, GetParam().backTrace) << output;
    }
};

TEST_P(DyingWindow, AnnouncesItsAbortionLastAndDiesOfTheSignal)
{
    Announcements announcements(client);
    // A signal from outside that finds its thread inside malloc may hang in the back trace.
    ASSERT_TRUE(await([this] { return isMainThreadAsleep(); }));
    process.sendSignal(GetParam().signal);
    expectAnnouncedDeath(announcements);
}

TEST_P(DyingWindow, AnnouncesItsAbortionFromInsideACallToo)
{
    if (GetParam().signal == SIGTERM) {
        // No fault of a thread: the server's thread holds it off, and a call that asks for it ends like any other.
        EXPECT_EQ(call("IWindow::handleEvent", pressOf(SIGTERM)), true);
        return;
    }
    Announcements announcements(client);
    EXPECT_EQ(errorOf("IWindow::handleEvent", pressOf(GetParam().signal)), "the server has closed the connection");
    expectAnnouncedDeath(announcements);
}

TEST_P(DyingWindow, AnnouncesItsAbortionWhenTheMessageIsOutThatItWasHitIn)
{
    if (GetParam().signal == SIGTERM)
        return; // held off on the server's thread, which sends the answers
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::handleEvent", pressOf(2000 + GetParam().signal)), true);
    expectAnnouncedDeath(announcements);
}

TEST_P(DyingWindow, AnnouncesItsAbortionAfterTheNotificationThatItWasHitIn)
{
    Announcements announcements(client);
    EXPECT_EQ(errorOf("IWindow::handleEvent", pressOf(4000 + GetParam().signal)),
              "the server has closed the connection");
    EXPECT_THAT(announcements.next(), testing::HasSubstr("IWindow::onOpacityChange"));
    expectAnnouncedDeath(announcements);
}

INSTANTIATE_TEST_SUITE_P(Signals, DyingWindow,
                         testing::Values(Death{SIGILL, true}, Death{SIGABRT, true}, Death{SIGFPE, true},
                                         Death{SIGSEGV, true}, Death{SIGTERM, false}, Death{SIGBUS, true}),
                         [](const auto& info) { return std::string("Signal") + sigabbrev_np(info.param.signal); });

class FaultyWindow : public DrivenProcess, public testing::WithParamInterface<int>
{
};

TEST_P(FaultyWindow, InTheMiddleOfAMessageDiesOfTheFaultAtOnce)
{
    Announcements announcements(client);
    EXPECT_EQ(errorOf("IWindow::handleEvent", pressOf(3000 + GetParam())), "the server has closed the connection");
    EXPECT_TRUE(announcements.untilGone().empty());
    EXPECT_EQ(process.wait().signal, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultyWindow, testing::Values(SIGSEGV, SIGBUS, SIGILL, SIGABRT),
                         [](const auto& info) { return std::string("Signal") + sigabbrev_np(info.param); });

using KilledWindow = DrivenProcess;

TEST_F(KilledWindow, BySigkillAnnouncesNothing)
{
    Announcements announcements(client);
    process.sendSignal(SIGKILL);
    EXPECT_TRUE(announcements.untilGone().empty());
    EXPECT_EQ(process.wait().signal, SIGKILL);
    EXPECT_TRUE(RPCClient::listServers().empty()) << "a socket without a server is no server";
}

TEST_F(KilledWindow, WhileItIsCalledDiesOfTheSignalAndAnswersOrDisconnects)
{
    std::atomic<bool> stop{false};
    std::vector<std::jthread> callers;
    for (int t = 0; t < 3; ++t)
        callers.emplace_back([this, &stop] {
            RPCClient caller(client.getServerName());
            while (!stop) {
                try {
                    caller.call("IWindow::setOpacity", R"({"opacity":1})", DEADLINE);
                } catch (const RPCError& error) {
                    // Between the announcement and the end of the process the window is not to be had any more.
                    const bool dying = error.getReason() == RPCError::Reason::CALL_FAILED &&
                                       std::string(error.what()) == "invalid proxy";
                    const bool dead = error.getReason() == RPCError::Reason::DISCONNECTED ||
                                      error.getReason() == RPCError::Reason::NO_SERVER;
                    EXPECT_TRUE(dying || dead) << error.what();
                }
            }
        });
    Announcements announcements(client);
    std::string announcement;
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(announcements.box.take(announcement)); // the calls are under way
    process.sendSignal(SIGTERM);
    EXPECT_EQ(process.wait().signal, SIGTERM) << process.getError();
    stop = true;
}

TEST_F(KilledWindow, LeavesItsNameToTheNextProcess)
{
    process.sendSignal(SIGKILL);
    process.wait();
    ChildProcess next({DRIVEN_WINDOW, "--application-type=test", std::string("--authorization-token=") + UID});
    ASSERT_TRUE(next.awaitOutput("running")) << next.getError();
    EXPECT_EQ(call("IApplication::getState"), "RUNNING");
}

#ifdef BREAKABLE_HEAP
TEST_F(KilledWindow, InsideMallocStillAnnouncesItsAbortionAndDies)
{
    Announcements announcements(client);
    EXPECT_EQ(errorOf("IWindow::handleEvent", pressOf(1000 + SIGTERM)), "the server has closed the connection");
    EXPECT_EQ(announcements.untilGone(), std::vector<std::string>{changeOf("RUNNING", "ABORTED")});
    EXPECT_EQ(process.wait().signal, SIGTERM);
}

TEST_F(KilledWindow, ByAFaultInsideMallocStillAnnouncesItsAbortionTracesAndDies)
{
    Announcements announcements(client);
    const std::string event =
        R"({"event":{"type":"KeyEvent","keyCode":)" + std::to_string(1000 + SIGABRT) + R"(,"pressed":true}})";
    EXPECT_EQ(errorOf("IWindow::handleEvent", event), "the server has closed the connection");
    EXPECT_EQ(announcements.untilGone(), std::vector<std::string>{changeOf("RUNNING", "ABORTED")});
    EXPECT_EQ(process.wait().signal, SIGABRT);
    EXPECT_NE(process.getOutput().find("Obtained 10 stack frames."), std::string::npos);
}
#endif

} // namespace

} // namespace Corvane::Test
