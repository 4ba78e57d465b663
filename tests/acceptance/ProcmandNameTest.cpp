#include "ProcmandFixture.h"

#include <corvane/common/RPCServer.h>
#include <csignal>
#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

namespace
{

using Members = std::map<std::string, std::string>;

class ProcmandNames : public WithProcmand
{
protected:
    std::string launchNamed(const std::string& name) { return launchVictim("", R"("name":")" + name + "\""); }
    std::string launchUid(const std::string& uid) { return launchVictim("", R"("uid":")" + uid + "\""); }
    static std::string refusalOfLaunch(const Words& options)
    {
        Words words{"launch"};
        words.insert(words.end(), options.begin(), options.end());
        words.push_back(PROCMAND_VICTIM);
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        return outcome.error;
    }
};

} // namespace

TEST_F(ProcmandNames, StandForTheUidInEveryCommand)
{
    startProcmand();
    const Outcome launched = corvanectl({"launch", "--name", "kitchen-tv", "--type", "player", PROCMAND_VICTIM});
    ASSERT_EQ(launched.status, 0) << launched.error;
    const std::string uid = launched.output.substr(0, 32);
    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    ChildProcess monitor({CORVANECTL, "monitor", "kitchen-tv"});
    ASSERT_TRUE(monitor.awaitOutput(uid + "  is watched"));

    EXPECT_EQ(corvanectl({"state", "kitchen-tv"}).output, "RUNNING\n");
    EXPECT_EQ(corvanectl({"opacity", "kitchen-tv", "7"}).status, 0);
    EXPECT_EQ(corvanectl({"opacity", uid}).output, "7\n");
    EXPECT_TRUE(monitor.awaitOutput(uid + "  IWindow::onOpacityChange"));
    EXPECT_EQ(corvanectl({"call", "kitchen-tv", "IWindow::getOpacity"}).output, "7\n");
    EXPECT_THAT(corvanectl({"describe", "kitchen-tv"}).output, HasSubstr("Server APP" + uid));
    EXPECT_EQ(corvanectl({"key", "kitchen-tv", "KEY_OK"}).status, 0);
    EXPECT_EQ(corvanectl({"stats", "kitchen-tv"}).status, 0);
    EXPECT_EQ(corvanectl({"focus", "kitchen-tv", "on"}).status, 0);
    EXPECT_EQ(find(uid)["focus"], "true");
    EXPECT_EQ(corvanectl({"restart", "kitchen-tv"}).status, 0);
    EXPECT_EQ(find(uid)["restarts"], "1");
    EXPECT_EQ(corvanectl({"stop", "kitchen-tv"}).status, 0);
    EXPECT_TRUE(find(uid).empty());
    EXPECT_THAT(corvanectl({"history", "kitchen-tv"}).output, ContainsRegex(uid + ".*\n.*" + uid));
}

TEST_F(ProcmandNames, AreShownWithTypeAndProgram)
{
    startProcmand();
    const std::string uid = launchVictim("", R"("name":"tv")");
    const std::string nameless = launchVictim();

    for (const char* command : {"ps", "windows"}) {
        const std::string table = corvanectl({command}).output;
        EXPECT_THAT(table, ContainsRegex("NAME +TYPE +PROGRAM\n"));
        EXPECT_THAT(table, ContainsRegex(uid + " .* tv +test +procmand-victim\n"));
        EXPECT_THAT(table, ContainsRegex(nameless + " .* - +test +procmand-victim\n"));
        EXPECT_THAT(corvanectl({command, "--json"}).output,
                    HasSubstr(R"("name":"tv","applicationType":"test","program":")" PROCMAND_VICTIM "\""));
    }
}

TEST_F(ProcmandNames, AreNotNeededToTellWhatWasStartedByHandApart)
{
    startProcmand();
    const HelloWindow hello("by-hand");
    ASSERT_TRUE(awaitMember("by-hand", "state", "RUNNING"));
    const Members members{{"name", ""}, {"applicationType", "demo"}, {"program", HELLO_WINDOW}};
    EXPECT_THAT(find("by-hand"), IsSupersetOf(members));

    killProcmand();
    startProcmand();
    EXPECT_THAT(find("by-hand"), IsSupersetOf(members));
}

TEST_F(ProcmandNames, StayOverARestartAndTheReturnOfTheProcessManager)
{
    startProcmand({"--restart-delay", "0.1"});
    const std::string uid = launchVictim("", R"("name":"tv","restart":"always")");
    kill(pidOf(uid), SIGKILL);
    ASSERT_TRUE(awaitMember(uid, "restarts", "1"));
    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_EQ(find(uid)["name"], "tv");

    killProcmand();
    startProcmand();
    EXPECT_EQ(find(uid)["name"], "tv");
    EXPECT_EQ(find(uid)["applicationType"], "test");
    EXPECT_EQ(corvanectl({"stop", "tv"}).status, 0);
}

TEST_F(ProcmandNames, AreThoseOfOneAtATime)
{
    startProcmand();
    const std::string uid = launchNamed("tv");

    EXPECT_EQ(refusalOfLaunch({"--name", "tv"}),
              "corvanectl: tv is taken: it is the name of an application, " + uid + "\n");
    EXPECT_EQ(refusalOfLaunch({"--name", uid}), "corvanectl: " + uid + " is taken: it is the uid of an application\n");
    EXPECT_EQ(refusalOfLaunch({"--uid", "tv"}),
              "corvanectl: tv is taken: it is the name of an application, " + uid + "\n");
    EXPECT_EQ(corvanectl({"stop", "tv"}).status, 0);
    EXPECT_NE(launchNamed("tv"), uid);
}

TEST_F(ProcmandNames, AreShortAndPlain)
{
    startProcmand();
    const std::string problem = "corvanectl: name: expected 1 to 32 of a-z, 0-9 and -, the first one no -\n";

    for (const std::string name : {"TV", "t v", "t_v", "t\xC3\xBCr", "-tv"})
        EXPECT_EQ(refusalOfLaunch({"--name=" + name}), problem) << name;
    EXPECT_EQ(refusalOfLaunch({"--name", std::string(33, 'a')}), problem);
    for (const std::string key : {"name", "uid"})
        EXPECT_THAT(refusalOf("IApplicationManager::launch", write({{"program", "a"}, {key, ""}})),
                    HasSubstr(key + ": expected 1 to "));
    EXPECT_NE(launchNamed("0-" + std::string(30, 'a')), "");
}

TEST_F(ProcmandNames, GoBehindAUidAndBeforeABeginning)
{
    startProcmand();
    const std::string named = launchNamed("tv");
    launchUid("tv-2");
    launchUid("t");
    for (const char* uid : {"tv-2", "t"})
        corvanectl({"opacity", uid, "3"});

    EXPECT_EQ(corvanectl({"opacity", "tv", "5"}).status, 0);
    EXPECT_EQ(corvanectl({"opacity", named}).output, "5\n");
    EXPECT_EQ(corvanectl({"opacity", "t"}).output, "3\n");
    EXPECT_EQ(corvanectl({"opacity", "tv-"}).output, "3\n");

    launch("/bin/sleep", {"1000"}, R"("uid":"x")"); // without a server
    launch("/bin/sleep", {"1000"}, R"("uid":"xy")");
    EXPECT_EQ(corvanectl({"stop", "x"}).status, 0);
    EXPECT_FALSE(find("xy").empty());
}

TEST_F(ProcmandNames, CanBeGivenByTheirBeginningUnlessSeveralBeginLikeThat)
{
    startProcmand();
    const std::string kitchen = launchNamed("tv-kitchen");
    const std::string uid = launchUid("tv-hall");

    EXPECT_EQ(corvanectl({"state", "tv-k"}).output, "RUNNING\n");
    EXPECT_EQ(corvanectl({"state", kitchen.substr(0, 20)}).output, "RUNNING\n");
    for (const Words& words : {Words{"state", "tv"}, Words{"stop", "tv"}, Words{"focus", "tv", "on"},
                               Words{"monitor", "tv"}, Words{"terminate", "tv"}}) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 2) << words.front();
        EXPECT_THAT(outcome.error,
                    AllOf(HasSubstr("'tv' may be any of "), HasSubstr("tv-hall"), HasSubstr(kitchen + " (tv-kitchen)")))
            << words.front();
    }
    EXPECT_EQ(corvanectl({"stop", "tv-h"}).status, 0);
    EXPECT_EQ(corvanectl({"stop", "tv"}).status, 0) << "only one is left";
    EXPECT_THAT(corvanectl({"history", "tv-h"}).output, AllOf(HasSubstr("  tv-hall  "), Not(HasSubstr(kitchen))));
    EXPECT_EQ(corvanectl({"history", "tv"}).status, 2);
}

TEST_F(ProcmandNames, OfAnApplicationThatWaitsForItsRestartAreItsOwn)
{
    startProcmand({"--restart-delay", "3600"});
    const std::string uid = launchShell("exit 1", R"("name":"tv","restart":"always")");
    ASSERT_TRUE(awaitMember(uid, "phase", "waiting"));

    EXPECT_THAT(refusalOfLaunch({"--name", "tv"}), HasSubstr("tv is taken"));
    EXPECT_EQ(corvanectl({"stop", "t"}).status, 0);
    EXPECT_TRUE(find(uid).empty());
}

TEST_F(ProcmandNames, OfAnApplicationThatWasGivenUpAreFree)
{
    startProcmand({"--restart-delay", "0.02", "--restart-limit", "1"});
    const std::string uid = launchShell("exit 1", R"("name":"tv","uid":"box","restart":"always")");
    ASSERT_TRUE(awaitMember(uid, "phase", "given-up"));

    const std::string next = launchNamed("tv");
    EXPECT_TRUE(find(uid).empty()) << "the name would stand for both of them";
    EXPECT_EQ(corvanectl({"state", "tv"}).output, "RUNNING\n");
    EXPECT_EQ(corvanectl({"stop", next}).status, 0);

    launchShell("exit 1", R"("name":"tv","uid":"box","restart":"always")");
    ASSERT_TRUE(awaitMember(uid, "phase", "given-up"));
    EXPECT_EQ(launchVictim("", R"("name":"tv","uid":"box")"), "box");
    EXPECT_EQ(find("box")["restarts"], "0");
}

TEST_F(ProcmandNames, AreBesideUidsThatTheLauncherChooses)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "--uid", "Box_1.tv", "--type", "test", PROCMAND_VICTIM});
    EXPECT_EQ(outcome.output, "Box_1.tv\n") << outcome.error;
    ASSERT_TRUE(awaitMember("Box_1.tv", "state", "RUNNING"));
    EXPECT_EQ(refusalOfLaunch({"--uid", "Box_1.tv"}),
              "corvanectl: Box_1.tv is taken: it is the uid of an application\n");
    EXPECT_EQ(corvanectl({"stop", "Box_1.tv"}).status, 0);
    EXPECT_EQ(launchUid("Box_1.tv"), "Box_1.tv");

    Corvane::RPCServer stranger("APPstranger");
    stranger.init();
    EXPECT_EQ(refusalOfLaunch({"--uid", "stranger"}),
              "corvanectl: stranger is taken: a process that was not launched here has it\n");
    for (const std::string uid : {"a/b", "..", ".a", "-a", "a b", "a\xC3\xBC"})
        EXPECT_EQ(refusalOfLaunch({"--uid=" + uid}), "corvanectl: uid: expected 1 to 64 of A-Z, a-z, 0-9, -, . and _, "
                                                     "the first one neither - nor .\n")
            << uid;
    EXPECT_THAT(refusalOfLaunch({"--uid", std::string(65, 'a')}), HasSubstr("uid: expected"));
}

TEST_F(ProcmandNames, AndWhatElsePeersSayCannotDriveTheTerminal)
{
    startProcmand();
    EXPECT_EQ(corvanectl({"launch", "/nowhere/\x1b[2J\xC2\x9B\xC3\xA9"}).error,
              "corvanectl: cannot start /nowhere/\\x1b[2J\\xc2\\x9b\xC3\xA9: No such file or directory\n");

    const std::string uid = launch(PROCMAND_VICTIM, {}, R"("applicationType":"\u001b[2J\u009b\u007f")");
    EXPECT_THAT(corvanectl({"ps"}).output, HasSubstr("  \\x1b[2J\\xc2\\x9b\\x7f  procmand-victim\n"));
}
