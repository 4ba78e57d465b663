#include "ProcmandFixture.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::StartsWith;

namespace
{

using ProcmandCommands = WithProcmand;

std::string trimmed(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

} // namespace

TEST_F(ProcmandCommands, LaunchAndTellTheUid)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "--type", "test", "--parameters", "no-cursor", "--location",
                                        "1,2,30,40", "--z-order", "3", "--opacity", "99", PROCMAND_VICTIM});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const std::string uid = trimmed(outcome.output);
    ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");

    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_EQ(corvanectl({"location", uid}).output, "1,2,30,40\n");
    EXPECT_EQ(corvanectl({"opacity", uid}).output, "99\n");
    EXPECT_THAT(corvanectl({"ps"}).output,
                AllOf(HasSubstr("UID"), ContainsRegex(uid + "  [0-9]+ +RUNNING +- +3 +[0-9.]+ % +[0-9]+ kB +"
                                                            "00:00:[0-9][0-9] +0 +")));
    const std::map<std::string, std::string> members{{"uid", uid},          {"phase", "running"}, {"state", "RUNNING"},
                                                     {"hasServer", "true"}, {"zOrder", "3"},      {"restart", "never"}};
    EXPECT_THAT(readMembers(corvanectl({"ps", "--json"}).output), IsSupersetOf(members));
    EXPECT_THAT(corvanectl({"windows"}).output, ContainsRegex(uid + " +3 +yes +99 +1,2,30,40 +-"));

    EXPECT_EQ(corvanectl({"focus", uid, "on"}).status, 0);
    EXPECT_EQ(find(uid)["focus"], "true");
    EXPECT_EQ(corvanectl({"stop", uid}).status, 0);
    EXPECT_TRUE(find(uid).empty());
}

TEST_F(ProcmandCommands, SayWhyAProgramCannotBeStarted)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "/nowhere/player"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "corvanectl: cannot start /nowhere/player: No such file or directory\n");
}

TEST_F(ProcmandCommands, SayWhichDirectoryAProgramCannotWorkIn)
{
    startProcmand();
    const auto problemWith = [](const std::string& folder) {
        return corvanectl({"launch", "--directory", folder, "/bin/true"}).error;
    };
    EXPECT_EQ(problemWith("/nosuch"), "corvanectl: cannot work in /nosuch: No such file or directory\n");
    EXPECT_EQ(problemWith("/bin/true"), "corvanectl: cannot work in /bin/true: Not a directory\n");
    const std::string closed = state.getPath() + "/closed";
    ASSERT_EQ(mkdir(closed.c_str(), 0600), 0);
    // Root may go everywhere.
    EXPECT_EQ(problemWith(closed),
              geteuid() == 0 ? "" : "corvanectl: cannot work in " + closed + ": Permission denied\n");
    EXPECT_EQ(corvanectl({"launch", "--directory", "/usr", "/nosuch"}).error,
              "corvanectl: cannot start /nosuch: No such file or directory\n");
}

TEST_F(ProcmandCommands, PassArgumentsOn)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "--env", "FRUIT=pear", "--env", "TREE=[oak]", "/bin/sh", "--", "-c",
                                        "exit $((${#FRUIT} * 10 + ${#TREE}))"});
    ASSERT_EQ(outcome.status, 0) << outcome.error;

    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", trimmed(outcome.output)}),
                HasSubstr("\"exitCode\":45"));
}

TEST_F(ProcmandCommands, RestartAndShowIt)
{
    startProcmand();
    const std::string uid = launchVictim();

    EXPECT_EQ(corvanectl({"restart", uid}).status, 0);
    EXPECT_EQ(find(uid)["restarts"], "1");
    EXPECT_EQ(corvanectl({"restart", "nobody"}).error, "corvanectl: there is no application nobody\n");
    EXPECT_EQ(corvanectl({"stop", "nobody"}).status, 1);
}

TEST_F(ProcmandCommands, MoveTheFocusAndSayWhyItCannotBeMoved)
{
    startProcmand({"--call-deadline", "0.3"});
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    EXPECT_EQ(corvanectl({"focus", a, "on"}).status, 0);
    EXPECT_EQ(find(a)["focus"], "true");
    EXPECT_EQ(corvanectl({"focus", b, "on"}).status, 0);
    EXPECT_EQ(find(b)["focus"], "true");
    EXPECT_EQ(find(a)["focus"], "false");

    freeze(a);
    const Outcome outcome = corvanectl({"focus", a, "on"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: Timed out\n");
}

TEST_F(ProcmandCommands, ShowTheFocusWithoutMovingIt)
{
    startProcmand();
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    ASSERT_EQ(corvanectl({"focus", a, "on"}).status, 0);

    EXPECT_EQ(corvanectl({"focus", a}).output, "on\n");
    EXPECT_EQ(corvanectl({"focus", b}).output, "off\n");
    EXPECT_EQ(corvanectl({"focus", b, "--json"}).output, "false\n");
    EXPECT_EQ(find(a)["focus"], "true");
    EXPECT_EQ(announcements.count({"IWindowCompositing::onFocusMove"}), 1U);
}

TEST_F(ProcmandCommands, AnswerAtOnceWhenNobodyWantsToWait)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "--wait", "0", "--directory", "/usr", "--json", "/nowhere/player"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_THAT(outcome.output, MatchesRegex("\\{\"uid\":\"[0-9a-f]+\"\\}\n"));
    EXPECT_NE(announcements.take({"onLaunchFailure", trimmed(outcome.output).substr(8, 32)}), "");
}

TEST_F(ProcmandCommands, ShowTheHistory)
{
    startProcmand();
    const std::string uid = launchShell("echo one >&2; echo two >&2; kill -9 $$");
    ASSERT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
    launchShell("exit 5");
    ASSERT_NE(announcements.take({"IApplicationManager::onEnd"}), "");

    const std::string output = corvanectl({"history", uid}).output;
    EXPECT_THAT(output, ContainsRegex("20[0-9-]+T[0-9:.]+Z  " + uid +
                                      "  pid [0-9]+  SIGKILL    /bin/sh\n"
                                      "    \\| one\n    \\| two\n"));
    EXPECT_THAT(corvanectl({"history", "--limit", "1"}).output, HasSubstr("exit 5"));
    EXPECT_THAT(corvanectl({"history", "--limit", "1"}).output, testing::Not(HasSubstr("SIGKILL")));
}

TEST_F(ProcmandCommands, MonitorTheWholeBoxOverOneConnection)
{
    startProcmand();
    const std::string uid = launchVictim();
    ChildProcess monitor({CORVANECTL, "monitor"});
    ASSERT_TRUE(monitor.awaitOutput("ORU  is watched\n"));
    corvanectl({"opacity", uid, "5"});

    EXPECT_TRUE(monitor.awaitOutput(uid + "  IWindow::onOpacityChange  oldOpacity=255  newOpacity=5\n"));
    kill(pidOf(uid), SIGKILL);
    EXPECT_TRUE(monitor.awaitOutput(uid + "  IApplicationManager::onEnd"));
    EXPECT_EQ(monitor.getOutput().find("is watched"), monitor.getOutput().rfind("is watched"));
}

TEST_F(ProcmandCommands, ShowTheApplicationsAgainAndAgain)
{
    startProcmand();
    const std::string uid = launchVictim();
    const Outcome outcome = corvanectl({"ps", "--watch", "0.05", "--count", "3"});

    EXPECT_EQ(outcome.status, 0) << outcome.error;
    std::size_t tables = 0;
    for (std::size_t at = outcome.output.find(uid); at != outcome.output.npos; at = outcome.output.find(uid, at + 1))
        ++tables;
    EXPECT_EQ(tables, 3U);
}

TEST_F(ProcmandCommands, SayThatThereIsNoProcessManager)
{
    for (const Words& words : {Words{"ps"}, Words{"history"}, Words{"windows"}, Words{"launch", "/bin/true"},
                               Words{"stop", "demo"}, Words{"restart", "demo"}}) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 3) << words.front();
        EXPECT_THAT(outcome.error, HasSubstr("no server ORU")) << words.front();
    }
}

TEST_F(ProcmandCommands, DescribeTheProcessManagerWhole)
{
    startProcmand();
    const std::string text = corvanectl({"describe", "ORU"}).output;

    for (const char* method : {"launch", "stop", "restart", "registerApplication", "getApplications", "getHistory"})
        EXPECT_THAT(text, HasSubstr(std::string("  IApplicationManager::") + method + "("));
    for (const char* method :
         {"setVisibility", "getVisibility", "setOpacity", "getOpacity", "setZOrder", "getZOrder", "setLocation",
          "getLocation", "bringToFront", "sendToBack", "bringForward", "sendBackward", "getWindows", "setFocus"})
        EXPECT_THAT(text, HasSubstr(std::string("  IWindowCompositing::") + method + "("));
    for (const char* method : {"getResource", "releaseResource"})
        EXPECT_THAT(text, HasSubstr(std::string("  IResourceAcquisition::") + method + "("));
}

TEST_F(ProcmandCommands, ProcmandTellsOfItsOptions)
{
    ChildProcess help({CORVANE_PROCMAND, "--help"});
    EXPECT_EQ(help.wait().status, 0);
    for (const char* option : {"--keep-alive-deadline", "--restart-limit", "--state-folder", "--stop-applications"})
        EXPECT_THAT(help.getOutput(), HasSubstr(option));
    ChildProcess wrong({CORVANE_PROCMAND, "--keep-alive-deadline", "soon"});
    EXPECT_EQ(wrong.wait().status, 2);
}
