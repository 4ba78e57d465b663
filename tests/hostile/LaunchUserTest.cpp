#include "HostileFixture.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace
{

/// As whom launched applications run.
class LaunchUser : public WithOtherUsers
{
protected:
    /// @param more  further members of the request, behind a comma
    static std::string shell(const std::string& command, const std::string& more = "")
    {
        return R"({"program":"/bin/sh","arguments":["-c",")" + command + "\"]" + more + "}";
    }
    static std::string launchAs(const TestUser& user, const std::string& request)
    {
        return as(user, [&] { return answerTo("IApplicationManager::launch", request); });
    }
    /// What the application that was launched last has printed.
    std::string awaitOutput()
    {
        return readMembers(announcements.take({"IApplicationManager::onEnd "}).substr(27))["standardOutput"];
    }
    static bool mayRun(const TestUser& user, const char* program)
    {
        return as(user, [&] { return std::string(::access(program, X_OK) == 0 ? "yes" : "no"); }) == "yes";
    }
};

constexpr char MANAGER[] = R"({"rules":[{"user":"nobody","role":"manager"}]})";
constexpr char SHOW_IDS[] = "id -u; id -ru; id -g; id -G; echo $HOME $USER; grep -c . /proc/self/status >/dev/null; "
                            "sed -n 's/^CapEff:\\\\t//p' /proc/self/status";

} // namespace

TEST_F(LaunchUser, IsTheOneWhoAsks)
{
    startWithPolicy(MANAGER);
    EXPECT_THAT(launchAs(MEMBER, shell(SHOW_IDS)), Not(HasSubstr("needs")));
    EXPECT_EQ(awaitOutput(), "65534\n65534\n65534\n65534\n/nonexistent nobody\n0000000000000000\n");
}

TEST_F(LaunchUser, IsNotRootBecauseSomebodySaysSo)
{
    startWithPolicy(MANAGER);
    EXPECT_EQ(launchAs(MEMBER, shell("id", R"(,"user":"root")")),
              "the policy does not let user 65534 launch anything as root");
    EXPECT_EQ(launchAs(MEMBER, shell("id", R"(,"user":"0")")),
              "the policy does not let user 65534 launch anything as root");
    EXPECT_EQ(launchAs(MEMBER, shell("id", R"(,"user":"daemon")")),
              "the policy does not let user 65534 launch anything as daemon");
    EXPECT_EQ(launchAs(MEMBER, shell("id", R"(,"user":"no-such-user")")), "there is no user no-such-user");
}

TEST_F(LaunchUser, IsNeitherRootForWhoMayLaunchAsAnybody)
{
    startWithPolicy(R"({"rules":[{"user":"nobody","role":"manager","users":["*"]}]})");
    EXPECT_EQ(launchAs(MEMBER, shell("id", R"(,"user":"root")")),
              "the policy does not let user 65534 launch anything as root");
    EXPECT_THAT(launchAs(MEMBER, shell("id -u", R"(,"user":"daemon")")), Not(HasSubstr("policy")));
    EXPECT_EQ(awaitOutput(), "1\n");
}

TEST_F(LaunchUser, IsTheOneWhomRootNames)
{
    startWithPolicy();
    launch("/bin/sh", {"-c", "id -u; id -g; id -G; pwd; echo $HOME"}, R"("user":"daemon")");
    EXPECT_EQ(awaitOutput(), "1\n1\n1\n/\n/usr/sbin\n");
}

TEST_F(LaunchUser, IsTheSameAgainWhenTheApplicationIsStartedAgain)
{
    startWithPolicy();
    const std::string uid = launchShell("exec sleep 1000", R"("user":"daemon")");
    killProcmand();
    startWithPolicy();
    ASSERT_TRUE(awaitMember(uid, "phase", "running"));
    call("IApplicationManager::restart", R"({"uid":")" + uid + "\"}");
    ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");
    struct stat status {
    };
    ASSERT_EQ(stat(("/proc/" + std::to_string(pidOf(uid))).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, STRANGER.id);
}

TEST_F(LaunchUser, CannotEnterAFolderThatIsClosedToIt)
{
    startWithPolicy();
    call("IApplicationManager::launch",
         shell("ls", R"(,"user":"daemon","workingDirectory":")" + state.getPath() + "\""));
    EXPECT_THAT(announcements.take({"IApplicationManager::onLaunchFailure "}), HasSubstr("Permission denied"));
}

TEST_F(LaunchUser, IsToldThatThereIsNoSuchProgram)
{
    startWithPolicy();
    call("IApplicationManager::launch", R"({"program":"/no/such/program","user":"daemon"})");
    EXPECT_THAT(announcements.take({"IApplicationManager::onLaunchFailure "}),
                HasSubstr("cannot start /no/such/program: No such file or directory"));
}

TEST_F(LaunchUser, CannotBeLedAstrayByVariables)
{
    startWithPolicy(R"({"rules":[],"environment":["APP_*","LD_PRELOAD"]})");
    const auto refusal = [this](const std::string& name) {
        return refusalOf("IApplicationManager::launch",
                         shell("true", R"(,"user":"daemon","environment":{")" + name + R"(":"/tmp/x"})"));
    };
    EXPECT_EQ(refusal("LD_PRELOAD"), "environment: LD_PRELOAD cannot be set for another user");
    EXPECT_EQ(refusal("LD_LIBRARY_PATH"), "environment: LD_LIBRARY_PATH cannot be set for another user");
    EXPECT_EQ(refusal("PATH"), "environment: PATH cannot be set for another user");
    launch("/bin/sh", {"-c", "echo $LANG $APP_MODE"},
           R"("user":"daemon","environment":{"LANG":"C.UTF-8","APP_MODE":"tv"})");
    EXPECT_EQ(awaitOutput(), "C.UTF-8 tv\n");
}

TEST_F(LaunchUser, SetsAnyVariableForItself)
{
    startWithPolicy(MANAGER);
    launchAs(MEMBER, shell("echo $LD_LIBRARY_PATH", R"(,"environment":{"LD_LIBRARY_PATH":"/tmp/own"})"));
    EXPECT_EQ(awaitOutput(), "/tmp/own\n");
}

TEST_F(LaunchUser, IsNoManagerAsAnApplication)
{
    if (!mayRun(MEMBER, PROCMAND_VICTIM))
        GTEST_SKIP() << "another user cannot reach " PROCMAND_VICTIM;
    // Not even where the policy makes its user one: that is for what the user starts.
    startWithPolicy(MANAGER);
    const std::string uid = launchVictim("", R"("user":"nobody")");
    EXPECT_THAT(call("IWindowCompositing::getWindows"), HasSubstr(uid));
    launch(CORVANECTL, {"stop", uid}, R"("user":"nobody")");
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd "}), HasSubstr("the role application"));
    EXPECT_EQ(call("IApplicationManager::stop", R"({"uid":")" + uid + "\"}"), "null");
    EXPECT_NE(announcements.take({"IApplicationManager::onStop ", uid}), "");
}

TEST_F(LaunchUser, LaunchesSixtyTimesAMinute)
{
    startWithPolicy(MANAGER);
    EXPECT_EQ(as(MEMBER,
                 [] {
                     for (int i = 0; i < 60; ++i)
                         if (const std::string answer =
                                 answerTo("IApplicationManager::launch", R"({"program":"true"})");
                             answer.size() != 34)
                             return answer;
                     return answerTo("IApplicationManager::launch", R"({"program":"true"})");
                 }),
              "user 65534 has launched 60 applications within a minute");
}
