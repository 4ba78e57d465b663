#include "ProcmandFixture.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <support/TaskState.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

class ProcmandSupervision : public WithProcmand
{
protected:
    std::vector<std::string> launchVictims(int count)
    {
        std::vector<std::string> uids;
        for (int i = 0; i < count; ++i)
            uids.push_back(launchVictim());
        return uids;
    }
};

std::string uidParameter(const std::string& uid)
{
    return write({{"uid", uid}});
}

} // namespace

TEST_F(ProcmandSupervision, KeepsHowAnApplicationCrashedInEachLifecycleState)
{
    startProcmand({"--keep-alive-deadline", "60"});
    // From LOADING on, each is reached from the one before it.
    for (const std::string state : {"UNINITIALIZED", "LOADING", "RUNNING", "SUSPENDING", "SUSPENDED", "RESUMING",
                                    "TERMINATING", "TERMINATED", "RUNAWAY"}) {
        const std::string uid = launchVictim("lingering");
        corvanectl({"state", uid, "UNINITIALIZED"});
        ASSERT_TRUE(awaitMember(uid, "state", "UNINITIALIZED"));
        for (const char* step : {"LOADING", "RUNNING", "SUSPENDING", "SUSPENDED", "RESUMING", "TERMINATING"})
            if (find(uid)["state"] != state) {
                corvanectl({"state", uid, step});
                ASSERT_TRUE(awaitMember(uid, "state", step));
            }
        if (state == "TERMINATED" || state == "RUNAWAY") {
            corvanectl({"state", uid, state});
            ASSERT_TRUE(awaitMember(uid, "state", state));
        }
        killAtRest(uid, SIGSEGV);

        const std::string end = announcements.take({"IApplicationManager::onEnd", uid});
        EXPECT_THAT(end, AllOf(HasSubstr(R"("exitCode":null,"signal":11)"),
                               HasSubstr(R"("state":"ABORTED","previousState":")" + state + "\""),
                               HasSubstr(R"("ranAway":false,"wasStopped":false)"),
                               HasSubstr("Received Signal [Segmentation fault]")))
            << state;
    }
}

TEST_F(ProcmandSupervision, KeepsHowOneCrashedThatHadAbortedAlready)
{
    startProcmand();
    const std::string uid = launchVictim("lingering");
    corvanectl({"state", uid, "ABORTED"});
    ASSERT_TRUE(awaitMember(uid, "state", "ABORTED"));
    killAtRest(uid, SIGBUS);

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("signal":7)"), HasSubstr(R"("state":"ABORTED","previousState":"RUNNING")")));
}

TEST_F(ProcmandSupervision, KeepsTheLastStateOfOneThatCouldNotSayAnything)
{
    startProcmand();
    const std::string uid = launchVictim();
    corvanectl({"state", uid, "SUSPENDING"});
    ASSERT_TRUE(awaitMember(uid, "state", "SUSPENDING"));
    kill(pidOf(uid), SIGKILL);

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("signal":9)"), HasSubstr(R"("state":"SUSPENDING","previousState":"RUNNING")")));
}

TEST_F(ProcmandSupervision, RemovesTheSocketThatADeadApplicationLeft)
{
    startProcmand({"--restart-delay", "0.02"});
    const std::string uid = launchVictim();
    HelloWindow hello("by hand");
    ASSERT_TRUE(awaitMember("by hand", "state", "RUNNING"));
    const std::string faithful = launchVictim("", R"("restart":"always")");
    kill(pidOf(uid), SIGKILL);
    kill(pidOf(faithful), SIGKILL);
    hello.process.sendSignal(SIGKILL);

    EXPECT_TRUE(await([&] { return !hasSocket(uid); }));
    EXPECT_TRUE(await([this] { return !hasSocket("by%20hand"); }));
    EXPECT_NE(announcements.take({"IApplicationManager::onLaunch ", faithful, R"("restarts":1)"}), "");
    EXPECT_TRUE(awaitMember(faithful, "hasServer", "true")) << "its next process has the name again";
    EXPECT_TRUE(hasSocket(faithful));
}

TEST_F(ProcmandSupervision, KeepsTheExitCode)
{
    startProcmand();
    const std::string uid = launchShell("exit 37");

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("exitCode":37,"signal":null)"), HasSubstr(R"("state":"")")));
}

TEST_F(ProcmandSupervision, KeepsTheLastFourKibibytesOfStandardError)
{
    startProcmand();
    const std::string uid =
        launchShell("echo not this; i=0; while [ $i -lt 1000 ]; do echo line $i >&2; i=$((i+1)); done");
    std::string all;
    for (int i = 0; i < 1000; ++i)
        all += "line " + std::to_string(i) + "\n";

    auto end = readMembers(announcements.take({"IApplicationManager::onEnd", uid}).substr(27));
    EXPECT_EQ(end["standardError"], all.substr(all.size() - 4096));
}

TEST_F(ProcmandSupervision, KeepsTheBackTraceOfACrash)
{
    startProcmand();
    const std::string uid = launchVictim();
    killAtRest(uid, SIGSEGV);

    auto end = readMembers(announcements.take({"IApplicationManager::onEnd", uid}).substr(27));
    EXPECT_THAT(end["standardOutput"], ContainsRegex("Obtained [0-9]+ stack frames.\n.+\n"));
    EXPECT_THAT(corvanectl({"history", uid}).output,
                ContainsRegex("\n    > Obtained [0-9]+ stack frames.\n    > .+\n"));
}

TEST_F(ProcmandSupervision, KeepsTheOutputOfTheLastThreeRuns)
{
    startProcmand({"--restart-delay", "0.02", "--restart-limit", "4"});
    const std::string uid = launchShell("echo $$; exit 1", R"("restart":"on-failure")");
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartLimit", uid}), "");
    std::vector<std::string> pids;
    for (const std::string& announcement : announcements.getAll())
        if (announcement.starts_with("IApplicationManager::onEnd "))
            pids.push_back(readMembers(announcement.substr(27))["pid"]);
    ASSERT_EQ(pids.size(), 5U);

    const std::string path = state.getPath() + "/output/" + uid + ".out";
    const auto printed = [&](const std::string& file) {
        std::string line;
        std::getline(std::ifstream(file) >> std::ws, line);
        return line;
    };
    EXPECT_EQ(printed(path), pids[4]);
    EXPECT_EQ(printed(path + ".1"), pids[3]);
    EXPECT_EQ(printed(path + ".2"), pids[2]);
    EXPECT_EQ(printed(path + ".3"), "");

    // They outlive the process manager, too, but not the memory of it.
    killProcmand();
    startProcmand();
    ASSERT_NE(announcements.take({"onEnd", launchShell("exit 3")}), "");
    EXPECT_EQ(printed(path), pids[4]);
    killProcmand();
    std::filesystem::remove(state.getPath() + "/history.jsonl");
    startProcmand();
    EXPECT_TRUE(await([&] { return std::filesystem::is_empty(state.getPath() + "/output"); }));
}

TEST_F(ProcmandSupervision, KeepsStandardErrorThatIsNoText)
{
    startProcmand();
    const std::string uid = launchShell(R"(printf 'a\377\000\033[1m\303' >&2)");

    auto end = readMembers(announcements.take({"IApplicationManager::onEnd", uid}).substr(27));
    EXPECT_EQ(end["standardError"], std::string("a\uFFFD\0\x1b[1m\uFFFD", 12));
    EXPECT_THAT(corvanectl({"history", uid}).output, testing::Not(HasSubstr("\x1b")));
}

TEST_F(ProcmandSupervision, MakesOneThatHangsARunawayAndKillsIt)
{
    startProcmand({"--call-deadline", "0.3", "--term-deadline", "0.3"});
    const std::string healthy = launchVictim();
    const std::string uid = launchVictim();
    freeze(uid);
    const auto start = std::chrono::steady_clock::now();

    ASSERT_NE(announcements.take({"IApplicationManager::onRunaway", uid}), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(14))
        << "it has 15 s to prove that it lives";
    EXPECT_EQ(find(uid)["state"], "RUNAWAY");
    const std::string end = announcements.take({"IApplicationManager::onEnd", uid});
    EXPECT_THAT(end, AllOf(HasSubstr(R"("signal":9)"), HasSubstr(R"("state":"RUNAWAY","previousState":"RUNNING")"),
                           HasSubstr(R"("ranAway":true,"wasStopped":false)")));
    EXPECT_EQ(find(healthy)["state"], "RUNNING") << "one that proves that it lives is left alone";
    EXPECT_EQ(announcements.count({"onRunaway", healthy}), 0U);
}

TEST_F(ProcmandSupervision, KillsOneThatHasAbortedAndDoesNotDie)
{
    startProcmand({"--terminate-deadline", "1000", "--keep-alive-deadline", "1000"});
    const std::string uid = launchVictim("lingering");
    const auto start = std::chrono::steady_clock::now();
    // It goes on saying that it is alive, with this state.
    corvanectl({"state", uid, "ABORTED"});

    EXPECT_NE(announcements.take({"IApplicationManager::onRunaway", uid}), "");
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("signal":9)"), HasSubstr(R"("state":"ABORTED","previousState":"RUNNING")"),
                      HasSubstr(R"("ranAway":true,"wasStopped":false)")));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << "a crash may take its time";
    EXPECT_THAT(procmand->getError(), HasSubstr(uid + " has aborted and still lives: it is killed\n"));
}

TEST_F(ProcmandSupervision, KillsOneThatHasAbortedWhenItIsFoundLikeThat)
{
    startProcmand();
    const std::string uid = launchVictim("lingering");
    killProcmand();
    corvanectl({"state", uid, "ABORTED"});
    startProcmand({"--abort-deadline", "0.2", "--keep-alive-deadline", "1000"});

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("state":"ABORTED")"), HasSubstr(R"("ranAway":true)")));
}

TEST_F(ProcmandSupervision, KillsOneThatAbortsWhileItIsBeingStopped)
{
    startProcmand({"--terminate-deadline", "1000", "--keep-alive-deadline", "1000", "--abort-deadline", "0.2"});
    const std::string uid = launchVictim("lingering deaf");
    call("IApplicationManager::stop", uidParameter(uid));
    corvanectl({"state", uid, "ABORTED"});

    EXPECT_THAT(announcements.take({"IApplicationManager::onStop", uid}), HasSubstr(R"("means":"SIGKILL")"));
}

TEST_F(ProcmandSupervision, AsksARunawayToTakeThatState)
{
    startProcmand({"--keep-alive-deadline", "0.5", "--call-deadline", "30"});
    const std::string uid = launchQuietVictim();

    ASSERT_NE(announcements.take({"IApplicationManager::onRunaway", uid}), "");
    EXPECT_NE(announcements.take({"IApplication::onStateChange", uid, R"("newState":"RUNAWAY")"}), "");
    // Its main loop ends in that state, so no signal is needed.
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr(R"("exitCode":0)"), HasSubstr(R"("ranAway":true)")));
}

TEST_F(ProcmandSupervision, DoesNotTakeItsOwnPauseForTheSilenceOfTheApplications)
{
    // On a busy machine an application takes its time until it first says something.
    startProcmand({"--keep-alive-deadline", "4"});
    const std::vector<std::string> uids = launchVictims(8);
    procmand->sendSignal(SIGSTOP);
    // This much time must pass; what the applications say in it waits to be read.
    ChildProcess({"sleep", "5.5"}).wait();
    procmand->sendSignal(SIGCONT);

    // Keep-alives of one more deadline.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
    while (std::chrono::steady_clock::now() < end)
        for (const std::string& uid : uids)
            ASSERT_NE(announcements.take({"IApplication::onKeepAlive", uid}), "") << procmand->getError();
    EXPECT_EQ(announcements.count({"onRunaway"}), 0U);
}

TEST_F(ProcmandSupervision, NoticesAControlServerThatNeverAnswers)
{
    startProcmand({"--keep-alive-deadline", "0.5", "--call-deadline", "0.3", "--term-deadline", "0.3"});
    // A server by its socket only: it takes connections, as the system does that, and answers nothing.
    const std::string uid =
        launch("python3", {"-c", "import json,os,signal,socket\n"
                                 "signal.signal(signal.SIGTERM, signal.SIG_IGN)\n"
                                 "uid=json.loads(os.environ['CORVANE_APP_PARAMETERS'])['authorizationToken']\n"
                                 "path=os.environ['CORVANE_RUNTIME_DIR']+'/APP'+uid+'.sock'\n"
                                 "s=socket.socket(socket.AF_UNIX)\ns.bind(path)\ns.listen()\nos.chmod(path,0o600)\n"
                                 "signal.pause()\n"});

    ASSERT_NE(announcements.take({"IApplicationManager::onRunaway", uid}), "");
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}), HasSubstr(R"("signal":9)"));
}

TEST_F(ProcmandSupervision, StopsByAskingFirst)
{
    startProcmand();
    const std::string uid = launchVictim();
    call("IApplicationManager::stop", uidParameter(uid));

    EXPECT_THAT(
        announcements.take({"IApplicationManager::onEnd", uid}),
        AllOf(HasSubstr(R"("exitCode":0)"), HasSubstr(R"("state":"TERMINATED")"), HasSubstr(R"("wasStopped":true)")));
    EXPECT_THAT(announcements.take({"IApplicationManager::onStop", uid}), HasSubstr(R"("means":"terminate")"));
    EXPECT_TRUE(find(uid).empty());
}

TEST_F(ProcmandSupervision, StopsWithSigtermOneThatDoesNotTerminateWhenAsked)
{
    startProcmand({"--terminate-deadline", "0.2"});
    const std::string deaf = launchVictim("deaf");
    call("IApplicationManager::stop", uidParameter(deaf));
    EXPECT_THAT(announcements.take({"IApplicationManager::onStop", deaf}), HasSubstr(R"("means":"SIGTERM")"));

    const std::string withoutServer = launchShell("sleep 1000");
    call("IApplicationManager::stop", uidParameter(withoutServer));
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", withoutServer}), HasSubstr(R"("signal":15)"));
}

TEST_F(ProcmandSupervision, StopsWithSigkillOneThatIgnoresSigterm)
{
    startProcmand({"--term-deadline", "0.2"});
    const std::string file = state.getPath() + "/ready";
    const std::string uid = launchShell("trap '' TERM; : >" + file + "; while :; do sleep 0.1; done");
    ASSERT_TRUE(await([&] { return std::ifstream(file).good(); }));
    call("IApplicationManager::stop", uidParameter(uid));

    EXPECT_THAT(announcements.take({"IApplicationManager::onStop", uid}), HasSubstr(R"("means":"SIGKILL")"));
}

TEST_F(ProcmandSupervision, SignalsTheWholeProcessGroup)
{
    startProcmand();
    const std::string file = state.getPath() + "/child";
    const std::string uid =
        launchShell("sleep 1000 & echo $! >" + file + ".new; mv " + file + ".new " + file + "; wait");
    ASSERT_TRUE(await([&] { return std::ifstream(file).good(); }));
    pid_t child = 0;
    std::ifstream(file) >> child;
    call("IApplicationManager::stop", uidParameter(uid));
    ASSERT_NE(announcements.take({"IApplicationManager::onStop", uid}), "");

    // Gone, or a zombie that nobody has waited for.
    EXPECT_TRUE(await([&] {
        const char taskState = readTaskState("/proc/" + std::to_string(child));
        return taskState == '\0' || taskState == 'Z';
    }));
}

TEST_F(ProcmandSupervision, RestartsAFailureWithGrowingDelaysUpToALimit)
{
    startProcmand({"--restart-delay", "0.02", "--restart-delay-limit", "0.05", "--restart-limit", "4"});
    const std::string uid = launchShell("exit 1", R"("restart":"on-failure")");
    ASSERT_THAT(announcements.take({"IApplicationManager::onRestartLimit", uid}), HasSubstr(R"("restartsInRow":4)"));

    std::vector<std::string> delays;
    for (const std::string& announcement : announcements.getAll())
        if (announcement.starts_with("IApplicationManager::onRestartDelay "))
            delays.push_back(readMembers(announcement.substr(36))["delayMs"]);
    EXPECT_THAT(delays, ElementsAre("20", "40", "50", "50"));
    EXPECT_EQ(announcements.count({"IApplicationManager::onLaunch ", uid}), 5U);
    EXPECT_EQ(announcements.count({"IApplicationManager::onEnd ", uid}), 5U);
}

TEST_F(ProcmandSupervision, ShowsWhomItHasGivenUpUntilSomebodyLooksAfterThem)
{
    startProcmand({"--restart-delay", "0.02", "--restart-limit", "2"});
    const std::string file = state.getPath() + "/go";
    const std::string uid = launchShell("[ -e " + file + " ] && exec sleep 1000; exit 3", R"("restart":"always")");
    const std::string other = launchShell("exit 4", R"("restart":"on-failure")");
    for (const std::string& one : {uid, other})
        ASSERT_TRUE(awaitMember(one, "phase", "given-up"));
    const std::string words = "given up after 2 restarts";
    const auto look = [&] {
        EXPECT_THAT(corvanectl({"ps"}).output, ContainsRegex(uid + "  -  +\\(" + words + "\\)"));
        EXPECT_THAT(corvanectl({"history", uid}).output,
                    ContainsRegex("20[0-9-]+T[0-9:.]+Z  " + uid + "  " + words + "  /bin/sh\n"));
    };
    look();
    EXPECT_THAT(procmand->getError(), HasSubstr(uid + " (/bin/sh) is " + words + "\n"));

    killProcmand();
    startProcmand();
    look();
    call("IApplicationManager::stop", uidParameter(other));
    EXPECT_NE(announcements.take({"IApplicationManager::onStop", other}), "");
    EXPECT_TRUE(find(other).empty());
    std::ofstream(file).close();
    EXPECT_EQ(corvanectl({"restart", uid}).status, 0);
    EXPECT_EQ(find(uid)["phase"], "running");
    EXPECT_EQ(find(uid)["restartsInRow"], "0");
}

TEST_F(ProcmandSupervision, ForgetsTheOldestOfManyThatItHasGivenUp)
{
    startProcmand({"--restart-limit", "0"});
    std::vector<std::string> uids;
    for (int i = 0; i < 102; ++i) {
        uids.push_back(launchShell("exit 1", R"("restart":"on-failure")"));
        ASSERT_NE(announcements.take({"IApplicationManager::onRestartLimit", uids.back()}), "");
    }
    EXPECT_TRUE(find(uids[1]).empty());
    EXPECT_EQ(find(uids[2])["phase"], "given-up");
    EXPECT_EQ(find(uids[101])["phase"], "given-up");
}

TEST_F(ProcmandSupervision, LogsEachEndThatIsAFailure)
{
    startProcmand();
    struct Case {
        const char* command;
        const char* line;
    };
    for (const Case& oneOf : {Case{"exit 3", "exit code 3, state unknown"},
                              Case{"kill -SEGV $$", "SIGSEGV, state unknown"}, Case{"exit 0", nullptr}}) {
        const std::string uid = launchShell(oneOf.command);
        ASSERT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
        const std::string log = procmand->getError();
        const std::string begin = uid + " (/bin/sh) has ended: ";
        EXPECT_EQ(log.find(begin) != log.npos, oneOf.line != nullptr) << log;
        EXPECT_THAT(log, HasSubstr(oneOf.line == nullptr ? "" : begin + oneOf.line + "\n"));
        EXPECT_EQ(log.find(begin), log.rfind(begin)) << "once";
    }
    const std::string uid = launchVictim();
    kill(pidOf(uid), SIGKILL);
    ASSERT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
    EXPECT_THAT(procmand->getError(), HasSubstr(uid + " (" PROCMAND_VICTIM ") has ended: SIGKILL, state RUNNING\n"));
}

TEST_F(ProcmandSupervision, BeginsANewRowOfRestartsAfterALongRun)
{
    startProcmand({"--restart-delay", "0.02", "--restart-limit", "1", "--stable-time", "0.001"});
    const std::string file = state.getPath() + "/go";
    const std::string uid =
        launchShell("until rm " + file + "; do sleep 0.01; done; sleep 0.01; exit 1", R"("restart":"on-failure")");
    for (int i = 0; i < 3; ++i) {
        std::ofstream(file).close();
        ASSERT_THAT(announcements.take({"IApplicationManager::onRestartDelay", uid}),
                    HasSubstr(R"("delayMs":20,"restartsInRow":1)"));
        ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");
    }
    EXPECT_EQ(announcements.count({"onRestartLimit"}), 0U);
}

TEST_F(ProcmandSupervision, RestartsUnderTheSameUidAfterACrashAndWatchesAgain)
{
    startProcmand({"--restart-delay", "0.02"});
    const std::string uid = launchVictim("", R"("restart":"on-failure")");
    const pid_t first = pidOf(uid);
    kill(first, SIGSEGV);
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", uid}), "");
    ASSERT_THAT(announcements.take({"IApplicationManager::onLaunch ", uid}), HasSubstr(R"("restarts":1)"));

    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_NE(pidOf(uid), first);
    EXPECT_EQ(find(uid)["restarts"], "1");
    EXPECT_EQ(corvanectl({"opacity", uid, "9"}).status, 0);
    EXPECT_NE(announcements.take({"IWindow::onOpacityChange", uid, "\"newOpacity\":9"}), "");
}

TEST_F(ProcmandSupervision, RestartsARunaway)
{
    startProcmand({"--restart-delay", "0.02", "--keep-alive-deadline", "0.2"});
    const std::string uid = launchQuietVictim(R"(,"restart":"on-failure")");

    EXPECT_THAT(announcements.take({"IApplicationManager::onLaunch ", uid}), HasSubstr(R"("restarts":1)"));
}

TEST_F(ProcmandSupervision, RestartsOnlyWhatItIsToRestart)
{
    startProcmand({"--restart-delay", "0.02", "--restart-limit", "1"});
    struct Case {
        const char* mode;
        const char* command;
        bool restarts;
    };
    for (const Case& oneOf : {Case{"never", "exit 1", false}, Case{"on-failure", "exit 0", false},
                              Case{"on-failure", "kill -9 $$", true}, Case{"always", "exit 0", true}}) {
        const std::string uid = launchShell(oneOf.command, std::string(R"("restart":")") + oneOf.mode + "\"");
        ASSERT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
        ASSERT_TRUE(await([&] {
            const auto application = find(uid);
            return application.empty() || application.at("phase") == "given-up";
        }));
        EXPECT_EQ(announcements.count({"IApplicationManager::onRestartDelay", uid}), oneOf.restarts ? 1U : 0U)
            << oneOf.mode << ": " << oneOf.command;
    }
}

TEST_F(ProcmandSupervision, DoesNotRestartWhatWasStopped)
{
    startProcmand({"--restart-delay", "0.02"});
    const std::string uid = launchVictim("", R"("restart":"always")");
    call("IApplicationManager::stop", uidParameter(uid));
    ASSERT_NE(announcements.take({"IApplicationManager::onStop", uid}), "");

    EXPECT_TRUE(find(uid).empty());
    EXPECT_EQ(announcements.count({"IApplicationManager::onRestartDelay", uid}), 0U);
}

TEST_F(ProcmandSupervision, StopsOneThatWaitsForItsRestart)
{
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    const std::string uid = launchShell("exit 1", R"("restart":"always")");
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", uid}), "");
    EXPECT_EQ(find(uid)["phase"], "waiting");
    call("IApplicationManager::stop", uidParameter(uid));

    EXPECT_NE(announcements.take({"IApplicationManager::onStop", uid}), "");
    EXPECT_TRUE(find(uid).empty());
}

TEST_F(ProcmandSupervision, RestartsOnRequestAtOnce)
{
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    const std::string uid = launchVictim();
    const pid_t first = pidOf(uid);
    call("IApplicationManager::restart", uidParameter(uid));

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}), HasSubstr(R"("wasStopped":true)"));
    EXPECT_THAT(announcements.take({"IApplicationManager::onLaunch ", uid}), HasSubstr(R"("restarts":1)"));
    EXPECT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_NE(pidOf(uid), first);
}

TEST_F(ProcmandSupervision, NeverWaitsInACallForAnApplicationThatHangs)
{
    startProcmand({"--call-deadline", "1000", "--terminate-deadline", "1000", "--keep-alive-deadline", "1000"});
    const std::string uid = launchVictim();
    const std::string other = launchVictim();
    freeze(uid);

    // Each of these makes a worker wait for a very long time; the calls have five seconds.
    call("IWindowCompositing::setFocus", R"({"uid":")" + uid + R"(","obtained":true})");
    call("IWindowCompositing::setFocus", R"({"uid":")" + other + R"(","obtained":true})");
    call("IApplicationManager::stop", uidParameter(uid));
    call("IApplicationManager::stop", uidParameter(other));
    EXPECT_NE(announcements.take({"IApplicationManager::onStop", other}), "");
    kill(pidOf(uid), SIGKILL);
    EXPECT_NE(announcements.take({"IApplicationManager::onStop", uid}), "");
}
