#include "ProcmandFixture.h"

#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <set>
#include <unistd.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace
{

using ProcmandLaunch = WithProcmand;

std::string readFile(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_F(ProcmandLaunch, GivesAProgramItsArgumentsEnvironmentFolderAndProcessGroup)
{
    startProcmand();
    const std::string file = state.getPath() + "/seen";
    const std::string uid = launch("/bin/sh",
                                   {"-c",
                                    "{ pwd; echo \"$1\"; echo \"$FRUIT\"; echo $$; ps -o pgid= -p $$ | tr -d ' '; "
                                    "readlink /proc/$$/fd/0; } >" +
                                        file,
                                    "sh", "one  word"},
                                   R"("workingDirectory":"/usr","environment":{"FRUIT":"pear = \"good\""})");
    ASSERT_THAT(announcements.take({"onEnd", uid}), HasSubstr("\"exitCode\":0"));

    std::istringstream seen(readFile(file));
    std::vector<std::string> lines;
    for (std::string line; std::getline(seen, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], "/usr");
    EXPECT_EQ(lines[1], "one  word");
    EXPECT_EQ(lines[2], "pear = \"good\"");
    EXPECT_EQ(lines[4], lines[3]) << "it leads a process group of its own";
    EXPECT_EQ(lines[5], "/dev/null");
}

TEST_F(ProcmandLaunch, HandsTheLaunchParametersOver)
{
    startProcmand();
    const std::string file = state.getPath() + "/seen";
    const std::string uid = launchShell("printf %s \"$CORVANE_APP_PARAMETERS\" >" + file,
                                        R"("applicationType":"video","applicationParameters":"no-cursor",)"
                                        R"("compositingParameters":{"opacity":100})");
    ASSERT_NE(announcements.take({"onEnd", uid}), "");

    EXPECT_EQ(readFile(file), R"({"applicationType":"video","applicationParameters":"no-cursor",)"
                              R"("compositingParameters":{"sessionIndex":0,"location":{"x":0,"y":0,"width":1280,)"
                              R"("height":720},"zOrder":0,"opacity":100,"visibility":true},"authorizationToken":")" +
                                  uid + "\"}");
}

TEST_F(ProcmandLaunch, MakesATokenThatNobodyCanGuess)
{
    startProcmand();
    std::set<std::string> uids;
    for (int i = 0; i < 20; ++i) {
        const std::string uid = launchShell(":");
        EXPECT_THAT(uid, MatchesRegex("[0-9a-f]+"));
        EXPECT_EQ(uid.size(), 32U);
        uids.insert(uid);
    }
    EXPECT_EQ(uids.size(), 20U);
}

TEST_F(ProcmandLaunch, TriesToRaiseTheLimitForNiceValuesAndSaysOnceWhereItCannot)
{
    startProcmand();
    const std::string file = state.getPath() + "/seen";
    for (int i = 0; i < 2; ++i)
        ASSERT_NE(announcements.take({"onEnd", launch("/bin/bash", {"-c", "ulimit -e >" + file})}), "");

    const std::string complaint = "cannot raise the limit for nice values";
    const std::string error = procmand->getError();
    if (readFile(file) == "20\n" || readFile(file) == "unlimited\n")
        EXPECT_EQ(error.find(complaint), error.npos);
    else
        EXPECT_THAT(error, HasSubstr(complaint));
    EXPECT_EQ(error.find(complaint), error.rfind(complaint)) << "once, not with every launch";
}

TEST_F(ProcmandLaunch, HandsNoDescriptorOfItsOwnDown)
{
    const int inherited = dup(STDERR_FILENO); // by the process manager, which does not know of it
    startProcmand();
    close(inherited);
    const std::string file = state.getPath() + "/seen";
    ASSERT_NE(announcements.take({"onEnd", launchShell("exec >" + file + "; ls /proc/$$/fd; :")}), "");
    EXPECT_EQ(readFile(file), "0\n1\n2\n");
}

TEST_F(ProcmandLaunch, AnswersAtOnceAndTellsLaterThatAProgramCannotBeStarted)
{
    startProcmand();
    const std::string result = call("IApplicationManager::launch", R"({"program":"/nowhere/player"})");

    const std::string failure = announcements.take({"IApplicationManager::onLaunchFailure"});
    EXPECT_THAT(failure, HasSubstr(result));
    EXPECT_THAT(failure, HasSubstr("cannot start /nowhere/player: No such file or directory"));
    EXPECT_TRUE(find(result.substr(1, result.size() - 2)).empty());
}

TEST_F(ProcmandLaunch, RefusesRequestsThatMakeNoSense)
{
    startProcmand();
    const std::string method = "IApplicationManager::launch";
    EXPECT_EQ(refusalOf(method), "program: missing");
    EXPECT_EQ(refusalOf(method, R"({"program":""})"), "program: is empty");
    EXPECT_EQ(refusalOf(method, R"({"program":"a","arguments":"b"})"), "arguments: expected an array");
    EXPECT_EQ(refusalOf(method, R"({"program":"a","arguments":[1]})"), "arguments: expected strings");
    EXPECT_EQ(refusalOf(method, R"({"program":"a","restart":"sometimes"})"),
              "restart: expected never, on-failure or always");
    EXPECT_EQ(refusalOf(method, R"({"program":"a","environment":{"A=B":"c"}})"),
              "environment.A=B: is no name of an environment variable");
    EXPECT_EQ(refusalOf(method, R"({"program":"a\u0000b"})"), "a NUL character cannot be passed to a program");
    for (const char* other : {"stop", "restart"})
        EXPECT_EQ(refusalOf(std::string("IApplicationManager::") + other, R"({"uid":"nobody"})"),
                  "there is no application nobody");
}

TEST_F(ProcmandLaunch, TakesUpAnApplicationThatWasStartedByHand)
{
    startProcmand();
    HelloWindow hello("by hand");
    ASSERT_THAT(announcements.take({"IApplicationManager::onRegister"}), HasSubstr(R"("uid":"by hand")"));

    EXPECT_TRUE(awaitMember("by hand", "state", "RUNNING"));
    EXPECT_EQ(pidOf("by hand"), hello.process.getPid());
    EXPECT_EQ(find("by hand")["restart"], "never");
    EXPECT_EQ(refusalOf("IApplicationManager::restart", write({{"uid", "by hand"}})),
              "the application by hand was started by hand");

    hello.process.sendSignal(SIGKILL);
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd"}),
                AllOf(HasSubstr(R"("exitCode":null,"signal":null)"), HasSubstr(R"("state":"RUNNING")")));
    EXPECT_TRUE(find("by hand").empty());
}

TEST_F(ProcmandLaunch, WatchesAProgramWithoutAControlServerAsAProcessOnly)
{
    startProcmand({"--keep-alive-deadline", "0.2"});
    const std::string file = state.getPath() + "/go";
    const std::string uid = launchShell("until [ -e " + file + " ]; do sleep 0.01; done; exit 7");
    // Another one runs away meanwhile: that much time has passed, then.
    ASSERT_NE(announcements.take({"onRunaway", launchQuietVictim()}), "");

    EXPECT_EQ(find(uid)["phase"], "running");
    std::ofstream(file).close();
    EXPECT_THAT(announcements.take({"onEnd", uid}), HasSubstr("\"exitCode\":7"));
    EXPECT_EQ(announcements.count({"onRunaway", uid}), 0U);
}

TEST_F(ProcmandLaunch, AnnouncesTheStatesOfEveryApplicationOnceAndInOrder)
{
    startProcmand({"--keep-alive-deadline", "60"});
    std::vector<std::string> uids;
    for (int i = 0; i < 10; ++i) {
        const std::string result =
            call("IApplicationManager::launch", R"({"applicationType":"test","program":")" PROCMAND_VICTIM R"("})");
        uids.push_back(result.substr(1, result.size() - 2));
    }
    for (const std::string& uid : uids) {
        const std::vector<std::string> running{"IApplication::onStateChange", uid, R"("newState":"RUNNING")"};
        ASSERT_TRUE(await([&] { return announcements.count(running) > 0; })) << "some are faster than the listener";
        call("IApplicationManager::stop", write({{"uid", uid}}));
    }
    ASSERT_TRUE(await([&] { return announcements.count({"IApplicationManager::onStop "}) == uids.size(); }));

    std::map<std::string, std::string> states;
    for (const std::string& announcement : announcements.getAll())
        if (announcement.starts_with("IApplication::onStateChange ")) {
            auto change = readMembers(announcement.substr(announcement.find(' ')));
            const std::string before = std::exchange(states[change["uid"]], change["newState"]);
            EXPECT_EQ(change["oldState"], before.empty() ? "UNINITIALIZED" : before) << announcement;
        }
    EXPECT_EQ(states.size(), uids.size());
}

TEST_F(ProcmandLaunch, RunsAHundredApplicationsAtOnce)
{
    constexpr int COUNT = 100;
    startProcmand({"--keep-alive-deadline", "60", "--call-deadline", "30", "--terminate-deadline", "30"});
    std::vector<std::string> uids;
    for (int i = 0; i < COUNT; ++i) {
        const std::string result =
            call("IApplicationManager::launch", R"({"applicationType":"demo","program":")" HELLO_WINDOW R"("})");
        uids.push_back(result.substr(1, result.size() - 2));
    }
    const auto findTrouble = [] {
        std::istringstream lines(corvanectl({"ps", "--json"}).output);
        std::string others;
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count)
            if (line.find(R"("state":"RUNNING","hasServer":true)") == line.npos)
                others += line + "\n";
        return count == COUNT ? others : others + std::to_string(count) + " in all";
    };
    EXPECT_TRUE(await([&] { return findTrouble().empty(); }, std::chrono::seconds(60))) << findTrouble();
    for (const char* failure : {"onLaunchFailure", "onEnd"})
        EXPECT_EQ(announcements.count({failure}), 0U) << announcements.take({failure});
    for (const std::string& uid : uids)
        call("IApplicationManager::stop", write({{"uid", uid}}));
    EXPECT_TRUE(await([&] { return announcements.count({"IApplicationManager::onStop "}) == COUNT; },
                      std::chrono::seconds(60)));
    EXPECT_EQ(announcements.count({"\"means\":\"terminate\""}), static_cast<std::size_t>(COUNT));
    EXPECT_EQ(corvanectl({"ps", "--json"}).output, "");
}

TEST_F(ProcmandLaunch, IsTheOnlyOneOfItsKind)
{
    startProcmand();
    const TemporaryDirectory other;
    ChildProcess second({CORVANE_PROCMAND, "--state-folder", other.getPath()});

    EXPECT_EQ(second.wait().status, 1);
    EXPECT_THAT(second.getError(), HasSubstr("a server that is alive listens on"));
    EXPECT_EQ(corvanectl({"ps"}).status, 0);
}

TEST_F(ProcmandLaunch, SharesItsStateFolderWithNobody)
{
    startProcmand();
    const std::string uid = launchShell("exec sleep 1000", R"("restart":"always")");
    const std::string history = readFile(state.getPath() + "/history.jsonl");
    {
        const TemporaryRuntime elsewhere;
        ChildProcess second({CORVANE_PROCMAND, "--state-folder", state.getPath()});

        EXPECT_EQ(second.wait().status, 1);
        EXPECT_THAT(second.getError(), HasSubstr("the state folder " + state.getPath() + " is in use by process " +
                                                 std::to_string(procmand->getPid()) + "\n"));
    }
    EXPECT_EQ(readFile(state.getPath() + "/history.jsonl"), history);
    EXPECT_EQ(find(uid)["phase"], "running");

    // What was launched does not hold the folder when the process manager has gone.
    killProcmand();
    startProcmand();
    EXPECT_EQ(find(uid)["phase"], "running");
}
