#include "ProcmandFixture.h"

#include <csignal>
#include <fstream>
#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::HasSubstr;

namespace
{

class ProcmandReturn : public WithProcmand
{
protected:
    /// @param command  of sed, for every line
    void rewriteHistory(const std::string& command)
    {
        ASSERT_EQ(ChildProcess({"sed", "-i", command, state.getPath() + "/history.jsonl"}).wait().status, 0);
    }
};

bool lives(pid_t pid)
{
    // A zombie that nobody has waited for lives no more.
    ChildProcess look({"/bin/sh", "-c", "! grep -q ') Z ' /proc/" + std::to_string(pid) + "/stat"});
    return look.wait().status == 0 && kill(pid, 0) == 0;
}

} // namespace

TEST_F(ProcmandReturn, FindsTheApplicationsAndTheirWindowsAgainAfterItWasKilled)
{
    startProcmand();
    const std::string uid = launchVictim();
    const std::string plain = launchShell("sleep 1000");
    HelloWindow hello("by hand");
    ASSERT_TRUE(awaitMember("by hand", "state", "RUNNING"));
    corvanectl({"focus", uid, "on"});
    corvanectl({"location", uid, "1,2,30,40"});
    corvanectl({"opacity", uid, "77"});
    ASSERT_NE(announcements.take({"IWindowCompositing::onOpacityChange", "77"}), "");
    const std::string index = corvanectl({"windows", "--json"}).output;
    const pid_t pid = pidOf(uid);
    const pid_t plainPid = pidOf(plain);
    // The windows' states are written with a delay; a victim's end is written at once and behind them.
    ASSERT_TRUE(await([&] {
        return ChildProcess({"grep", "-q", "\"opacity\":77", state.getPath() + "/history.jsonl"}).wait().status == 0;
    }));
    killProcmand();
    EXPECT_TRUE(lives(pid));
    EXPECT_TRUE(lives(plainPid));

    startProcmand();
    EXPECT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_TRUE(awaitMember(uid, "focus", "true"));
    EXPECT_TRUE(awaitMember("by hand", "state", "RUNNING"));
    EXPECT_EQ(pidOf(uid), pid);
    EXPECT_EQ(pidOf(plain), plainPid);
    EXPECT_EQ(corvanectl({"windows", "--json"}).output, index);
    // The window's own connection works again.
    EXPECT_EQ(corvanectl({"opacity", uid, "12"}).status, 0);
    EXPECT_EQ(corvanectl({"opacity", uid}).output, "12\n");

    // It is no child of the new process manager: how it ended is unknown, that it ended is not.
    kill(pid, SIGKILL);
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("exitCode":null,"signal":null)"), HasSubstr(R"("state":"RUNNING")")));
    EXPECT_NE(announcements.take({"IWindowCompositing::onWindowRelease", uid}), "");
}

TEST_F(ProcmandReturn, LetsTheApplicationsWriteWhileItIsGoneAndKeepsWhatTheyWrote)
{
    startProcmand();
    const std::string file = state.getPath() + "/go";
    const std::string uid = launchShell(
        "until [ -e " + file + " ]; do sleep 0.01; done; echo still here >&2 && echo output && exec sleep 1000");
    const pid_t pid = pidOf(uid);
    killProcmand();
    std::ofstream(file).close();
    // It goes on only when both of its writes worked.
    ASSERT_TRUE(await([&] {
        return ChildProcess({"grep", "-q", "^sleep", "/proc/" + std::to_string(pid) + "/cmdline"}).wait().status == 0;
    }));

    startProcmand();
    ASSERT_TRUE(awaitMember(uid, "phase", "running"));
    kill(pid, SIGKILL);
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                HasSubstr(R"("standardError":"still here\n")"));
}

TEST_F(ProcmandReturn, FailsCallsOfWindowsClearlyWhileItIsGone)
{
    startProcmand();
    const std::string uid = launchVictim();
    killProcmand();

    const Outcome outcome = corvanectl({"opacity", uid, "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("no process manager is running"));
    startProcmand();
    EXPECT_TRUE(await([&] { return corvanectl({"opacity", uid, "1"}).status == 0; }));
}

TEST_F(ProcmandReturn, RecordsWhatEndedWhileItWasGoneAndRestartsIt)
{
    startProcmand();
    const std::string uid = launchVictim();
    const std::string faithful = launchVictim("", R"("restart":"on-failure")");
    const pid_t pid = pidOf(uid);
    const pid_t faithfulPid = pidOf(faithful);
    killProcmand();
    kill(pid, SIGKILL);
    kill(faithfulPid, SIGKILL);
    ASSERT_TRUE(await([&] { return !lives(pid) && !lives(faithfulPid); }));

    EXPECT_TRUE(hasSocket(uid));
    startProcmand({"--restart-delay", "0.02"});
    EXPECT_TRUE(await([&] { return !hasSocket(uid); }));
    EXPECT_THAT(corvanectl({"history", uid}).output, HasSubstr(uid + "  pid " + std::to_string(pid) + "  unknown"));
    EXPECT_TRUE(find(uid).empty());
    EXPECT_TRUE(awaitMember(faithful, "state", "RUNNING"));
    EXPECT_EQ(find(faithful)["restarts"], "1");
}

TEST_F(ProcmandReturn, KnowsThePlacesOfWindowsThatWentMeanwhile)
{
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    const std::string waits = launchVictim("", R"("restart":"on-failure")");
    const std::string runs = launchVictim("", R"("restart":"on-failure")");
    for (const std::string& uid : {waits, runs})
        ASSERT_EQ(corvanectl({"location", uid, "1,2,30,40"}).status, 0);
    kill(pidOf(waits), SIGKILL);
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", waits}), "");
    const pid_t pid = pidOf(runs);
    killProcmand();
    kill(pid, SIGKILL);
    ASSERT_TRUE(await([pid] { return !lives(pid); }));

    startProcmand({"--restart-delay", "0.02"});
    for (const std::string& uid : {waits, runs}) {
        ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
        EXPECT_EQ(corvanectl({"location", uid}).output, "1,2,30,40\n");
    }
}

TEST_F(ProcmandReturn, KnowsForHowLongTheApplicationsHaveRun)
{
    startProcmand();
    const std::string uid = launchShell("exec sleep 1000");
    const auto uptime = [&] { return std::stoi(find(uid)["uptimeSeconds"]); };
    ASSERT_TRUE(await([&] { return uptime() > 0; }));
    killProcmand();

    startProcmand();
    EXPECT_GT(uptime(), 0);
}

TEST_F(ProcmandReturn, GoesOnWithTheRowOfRestarts)
{
    const std::string file = state.getPath() + "/go";
    const auto awaitRow = [this](const std::string& uid, const std::string& row) {
        return announcements.take({"IApplicationManager::onRestartDelay", uid, "\"restartsInRow\":" + row + "}"}) != "";
    };
    startProcmand({"--restart-delay", "0.02"});
    const std::string uid = launchShell("until rm " + file + "; do sleep 0.01; done; exit 1", R"("restart":"always")");
    std::ofstream(file).close();
    ASSERT_TRUE(awaitRow(uid, "1"));
    ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");
    killProcmand();

    // Of one that runs, and of one that waits for its restart.
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    std::ofstream(file).close();
    EXPECT_TRUE(awaitRow(uid, "2"));
    killProcmand();
    startProcmand({"--restart-delay", "0.02"});
    EXPECT_TRUE(awaitMember(uid, "restarts", "2"));
    std::ofstream(file).close();
    EXPECT_TRUE(awaitRow(uid, "3"));
    EXPECT_EQ(announcements.count({"onRestartDelay", "\"restartsInRow\":1}"}), 1U);
}

TEST_F(ProcmandReturn, BeginsANewRowOfRestartsWhereThereWasTimeForALongRun)
{
    const std::string file = state.getPath() + "/go";
    startProcmand({"--restart-delay", "0.02"});
    const std::string uid =
        launchShell("until rm " + file + "; do sleep 0.01; done; exit 1", R"("restart":"on-failure")");
    std::ofstream(file).close();
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", uid}), "");
    ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");
    const pid_t pid = pidOf(uid);
    killProcmand();
    kill(pid, SIGKILL);
    ASSERT_TRUE(await([pid] { return !lives(pid); }));

    startProcmand({"--restart-delay", "0.02", "--restart-limit", "1", "--stable-time", "0.001"});
    EXPECT_TRUE(awaitMember(uid, "restarts", "2"));
}

TEST_F(ProcmandReturn, KeepsTheHistoryAndTheRestartsThatAreDue)
{
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    const std::string uid = launchShell("echo last words >&2; exit 3", R"("restart":"always")");
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", uid}), "");
    killProcmand();

    startProcmand({"--restart-delay", "0.02", "--restart-limit", "1"});
    ASSERT_TRUE(await([&] {
        return corvanectl({"history", "--json", uid}).output.find("\"restarts\":1") != std::string::npos;
    }));
    const std::string history = corvanectl({"history", uid}).output;
    EXPECT_THAT(history, AllOf(HasSubstr("exit 3"), HasSubstr("    | last words\n")));
}

TEST_F(ProcmandReturn, DoesNotTakeAnotherProcessForTheOneThatItKnew)
{
    startProcmand();
    const std::string uid = launchShell("exec sleep 1000");
    const pid_t pid = pidOf(uid);
    killProcmand();
    // As if the system had given the number to another process since, which is none of that run either.
    rewriteHistory("s/\"startTime\":\"[0-9]*\"/\"startTime\":\"1\"/; s/\"mark\":\"[^\"]*\"/\"mark\":\"0\"/");

    startProcmand();
    EXPECT_TRUE(find(uid).empty());
    EXPECT_THAT(corvanectl({"history", uid}).output, HasSubstr("unknown"));
    EXPECT_TRUE(lives(pid));
}

TEST_F(ProcmandReturn, KeepsTheHistoryButNoApplicationsWhenTheMachineWasStartedAnew)
{
    startProcmand();
    ASSERT_NE(announcements.take({"onEnd", launchShell("exit 3")}), "");
    const std::string uid = launchShell("exec sleep 1000", R"("restart":"always")");
    killProcmand();
    rewriteHistory("s/\"boot\":\"[^\"]*\"/\"boot\":\"another\"/");

    startProcmand();
    EXPECT_TRUE(find(uid).empty());
    EXPECT_THAT(corvanectl({"history"}).output, AllOf(HasSubstr("exit 3"), testing::Not(HasSubstr(uid))));
}

TEST_F(ProcmandReturn, LeavesTheApplicationsRunningAtItsEnd)
{
    startProcmand();
    const std::string uid = launchVictim();
    const pid_t pid = pidOf(uid);

    EXPECT_EQ(endProcmand(), 0);
    EXPECT_TRUE(lives(pid));
}

TEST_F(ProcmandReturn, StopsWhatItLaunchedAtItsEndWhenItIsToldTo)
{
    startProcmand({"--stop-applications"});
    const pid_t pid = pidOf(launchVictim("", R"("restart":"always")"));
    const pid_t plain = pidOf(launchShell("sleep 1000"));
    HelloWindow hello("by hand");
    ASSERT_TRUE(awaitMember("by hand", "state", "RUNNING"));

    EXPECT_EQ(endProcmand(), 0);
    EXPECT_FALSE(lives(pid));
    EXPECT_FALSE(lives(plain));
    EXPECT_TRUE(lives(hello.process.getPid())) << "what was started by hand is not its to stop";
}

TEST_F(ProcmandReturn, ReadsAHistoryThatWasCutShort)
{
    startProcmand();
    ASSERT_NE(announcements.take({"onEnd", launchShell("exit 3")}), "");
    killProcmand();
    ASSERT_EQ(
        ChildProcess({"/bin/sh", "-c", "printf '{\"record\":\"end\",\"uid' >>" + state.getPath() + "/history.jsonl"})
            .wait()
            .status,
        0);

    startProcmand();
    EXPECT_THAT(corvanectl({"history"}).output, HasSubstr("exit 3"));
    ASSERT_NE(announcements.take({"onEnd", launchShell("exit 4")}), "");
    EXPECT_THAT(corvanectl({"history"}).output, AllOf(HasSubstr("exit 3"), HasSubstr("exit 4")));
}
