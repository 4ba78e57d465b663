#include "HostileFixture.h"

#include <gmock/gmock.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Who speaks in the name of another process. Here even the attacker is the process manager's own user.
using Impostor = WithAttackers;

TEST_F(Impostor, CannotHaveAnotherProcessEndedByRegisteringIt)
{
    startWithPolicy("", {"--keep-alive-deadline", "0.05"});
    ChildProcess victim({"sleep", "1000"});
    const pid_t pid = victim.getPid();

    EXPECT_EQ(inChild([&] { return answerTo("IApplicationManager::registerApplication", registrationOf("x", pid)); }),
              "process " + std::to_string(pid) + " is not the caller's own");
    EXPECT_THAT(inChild([&] { return answerTo("IResourceAcquisition::getResource", windowFor("x", pid)); }),
                HasSubstr(R"("state":1)"));
    EXPECT_EQ(inChild([] { return answerTo("IApplicationManager::stop", R"({"uid":"x"})"); }),
              "there is no application x");
    EXPECT_EQ(kill(pid, 0), 0);
    EXPECT_THAT(audit({"refused", "registerApplication", "\"subject\":\"x\""}), SizeIs(1));
}

TEST_F(Impostor, CannotTakeTheUidOfAnApplicationThatWasLaunched)
{
    startWithPolicy();
    const std::string uid = launchVictim();
    const std::string refusal = "the uid " + uid + " belongs to another process";

    EXPECT_EQ(
        inChild([&] { return answerTo("IApplicationManager::registerApplication", registrationOf(uid, getpid())); }),
        refusal);
    // Nor with the process id of the application.
    const pid_t pid = pidOf(uid);
    EXPECT_EQ(inChild([&] { return answerTo("IApplicationManager::registerApplication", registrationOf(uid, pid)); }),
              refusal);
    EXPECT_THAT(inChild([&] { return answerTo("IResourceAcquisition::getResource", windowFor(uid, getpid())); }),
                HasSubstr(R"("state":1)"));
    EXPECT_THAT(audit({"refused", "getResource", uid}), SizeIs(1));
}

TEST_F(Impostor, CannotTakeTheUidOfOneWhoRegisteredFirst)
{
    startWithPolicy();
    EXPECT_EQ(call("IApplicationManager::registerApplication", registrationOf("first", getpid())), "null");
    EXPECT_EQ(
        inChild([] { return answerTo("IApplicationManager::registerApplication", registrationOf("first", getpid())); }),
        "the uid first belongs to another process");
    EXPECT_EQ(call("IApplicationManager::registerApplication", registrationOf("first", getpid())), "null");
    EXPECT_EQ(find("first")["pid"], std::to_string(getpid()));
}

TEST_F(Impostor, CannotTakeTheUidOfAnApplicationThatWaitsForItsRestart)
{
    startWithPolicy("", {"--restart-delay", "1000"});
    const std::string uid = launchShell("exit 3", R"("restart":"always")");
    ASSERT_TRUE(awaitMember(uid, "phase", "waiting"));
    EXPECT_EQ(
        inChild([&] { return answerTo("IApplicationManager::registerApplication", registrationOf(uid, getpid())); }),
        "the uid " + uid + " belongs to another process");
    EXPECT_THAT(inChild([&] { return answerTo("IResourceAcquisition::getResource", windowFor(uid, getpid())); }),
                HasSubstr(R"("state":1)"));
}

TEST_F(Impostor, IsNotWhoWasLaunchedByAScript)
{
    startWithPolicy();
    const std::string uid =
        launch("/bin/sh", {"-c", std::string(PROCMAND_VICTIM) + "; true"}, R"("applicationType":"test")");
    EXPECT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_THAT(corvanectl({"windows"}).output, HasSubstr(uid));
}

TEST_F(Impostor, IsNoManagerBecauseTheProcessManagerHasLaunchedIt)
{
    startWithPolicy();
    const std::string uid = launchVictim();
    launch(CORVANECTL, {"stop", uid});
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd "}), HasSubstr("the role application"));
    EXPECT_EQ(find(uid)["phase"], "running");
}

TEST_F(Impostor, IsAManagerIfThePolicySaysSoOfItsName)
{
    startWithPolicy(R"({"rules":[{"application":"home","role":"manager"}]})");
    const std::string uid = launchVictim();
    launch(CORVANECTL, {"stop", uid}, R"("name":"home")");
    EXPECT_NE(announcements.take({"IApplicationManager::onStop ", uid}), "");
}

TEST_F(Impostor, IsNobodyWhomTheAuditDoesNotName)
{
    startWithPolicy();
    const std::string uid = launchVictim();
    call("IApplicationManager::stop", R"({"uid":")" + uid + "\"}");
    refusalOf("IApplicationManager::restart", R"({"uid":"unknown"})");

    const std::string caller = "\"pid\":" + std::to_string(getpid()) + ",";
    const std::string user = "\"user\":" + std::to_string(geteuid());
    EXPECT_THAT(audit({caller, user, "IApplicationManager::launch", "accepted", "test-hostile"}), SizeIs(1));
    EXPECT_THAT(audit({caller, user, "IApplicationManager::stop", "accepted", uid}), SizeIs(1));
    EXPECT_THAT(audit({caller, user, "IApplicationManager::restart", "failed", "there is no application unknown"}),
                SizeIs(1));
    EXPECT_THAT(procmand->getError(), HasSubstr("audit {"));
    EXPECT_THAT(corvanectl({"audit"}).output, HasSubstr(uid));
}
