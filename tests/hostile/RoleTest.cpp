#include "HostileFixture.h"

#include <corvane/common/RPCError.h>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// What other users may do, by the roles that they have.
class Role : public WithOtherUsers
{
protected:
    static std::string policyFor(const std::string& role)
    {
        return R"({"rules":[{"user":"nobody","role":")" + role + "\"}]}";
    }
    static std::string subscribe() { return answerTo("rpc.subscribe", R"({"notifications":["*"]})"); }
};

TEST_F(Role, OfAMemberOfTheGroupIsViewerWhoReadsAndDoesNothing)
{
    startWithPolicy();
    const std::string uid = launchVictim();
    const auto answer = [&](const std::string& method, const std::string& parameters) {
        return as(MEMBER, [&] { return answerTo(method, parameters); });
    };
    EXPECT_THAT(answer("IApplicationManager::getApplications", "{}"), HasSubstr(uid));
    EXPECT_THAT(answer("IWindowCompositing::getWindows", "{}"), HasSubstr(uid));
    EXPECT_EQ(as(MEMBER, subscribe), "null");

    const std::string needed = " needs the role manager; this caller has the role viewer";
    const std::string who = R"({"uid":")" + uid + "\"}";
    EXPECT_EQ(answer("IApplicationManager::launch", R"({"program":"/bin/true"})"),
              "IApplicationManager::launch" + needed);
    EXPECT_EQ(answer("IApplicationManager::stop", who), "IApplicationManager::stop" + needed);
    EXPECT_EQ(answer("IApplicationManager::restart", who), "IApplicationManager::restart" + needed);
    EXPECT_EQ(answer("IApplicationManager::getAudit", "{}"), "IApplicationManager::getAudit" + needed);
    EXPECT_EQ(answer("IWindowCompositing::setFocus", R"({"uid":")" + uid + R"(","obtained":true})"),
              "IWindowCompositing::setFocus" + needed);
    EXPECT_EQ(answer("IWindowCompositing::setOpacity", R"({"index":1,"opacity":0})"),
              "IWindowCompositing::setOpacity needs the role application or manager; this caller has the role viewer");
    EXPECT_EQ(answer("IResourceAcquisition::releaseResource", R"({"index":1})"),
              "IResourceAcquisition::releaseResource needs the role application or manager; this caller has the role "
              "viewer");
    EXPECT_EQ(find(uid)["state"], "RUNNING");
    EXPECT_THAT(audit({"refused", "\"user\":65534", "IApplicationManager::launch", "/bin/true"}), SizeIs(1));
}

TEST_F(Role, OfAnApplicationIsForItsOwnProcessAlone)
{
    startWithPolicy(policyFor("application"), {"--keep-alive-deadline", "0.05"});
    ChildProcess victim({"sleep", "1000"});
    const pid_t pid = victim.getPid();
    EXPECT_EQ(
        as(MEMBER, [&] { return answerTo("IApplicationManager::registerApplication", registrationOf("x", pid)); }),
        "process " + std::to_string(pid) + " is not the caller's own");
    EXPECT_EQ(as(MEMBER, [] { return answerTo("IApplicationManager::registerApplication", registrationOf("x", 1)); }),
              "process 1 is not the caller's own");
    EXPECT_EQ(
        as(MEMBER, [] { return answerTo("IApplicationManager::registerApplication", registrationOf("x", getpid())); }),
        "null");
    EXPECT_THAT(as(MEMBER, [] { return answerTo("IApplicationManager::getApplications"); }),
                HasSubstr("needs the role viewer or manager; this caller has the role application"));
    EXPECT_THAT(as(MEMBER, subscribe), HasSubstr("rpc.subscribe needs the role viewer or manager"));
    EXPECT_EQ(kill(pid, 0), 0);
}

TEST_F(Role, OfAnApplicationIsForItsOwnWindowsAlone)
{
    startWithPolicy(policyFor("application"));
    const std::string uid = launchVictim();
    const std::string foreign = "{\"index\":" + corvanectl({"windows", "--json"}).output.substr(9, 1);
    const auto refused = [](const std::string& method) {
        return HasSubstr(method + " needs the role manager for window 1, which is another application's");
    };
    EXPECT_THAT(as(MEMBER, [&] { return answerTo("IWindowCompositing::setOpacity", foreign + ",\"opacity\":0}"); }),
                refused("IWindowCompositing::setOpacity"));
    EXPECT_THAT(as(MEMBER, [&] { return answerTo("IWindowCompositing::getOpacity", foreign + "}"); }),
                refused("IWindowCompositing::getOpacity"));
    EXPECT_THAT(as(MEMBER, [&] { return answerTo("IWindowCompositing::bringToFront", foreign + "}"); }),
                refused("IWindowCompositing::bringToFront"));
    EXPECT_THAT(as(MEMBER, [&] { return answerTo("IResourceAcquisition::releaseResource", foreign + "}"); }),
                refused("IResourceAcquisition::releaseResource"));
    EXPECT_EQ(call("IWindowCompositing::getOpacity", foreign + "}"), "255");
    EXPECT_EQ(as(MEMBER,
                 [] {
                     answerTo("IResourceAcquisition::getResource", windowFor("own", getpid()));
                     std::string answers = answerTo("IWindowCompositing::setOpacity", R"({"index":2,"opacity":7})");
                     answers += answerTo("IWindowCompositing::getOpacity", R"({"index":2})");
                     return answers + answerTo("IResourceAcquisition::releaseResource", R"({"index":2})");
                 }),
              "null7null");
    EXPECT_THAT(audit({"refused", "releaseResource", uid}), SizeIs(1));
}

TEST_F(Role, OfOneWhomThePolicyGivesNoneLeavesNothing)
{
    startWithPolicy(R"({"rules":[{"group":"nogroup","role":"none"}]})");
    EXPECT_THAT(as(MEMBER, [] { return answerTo("IWindowCompositing::screenshot"); }),
                HasSubstr("needs the role viewer or manager; this caller has no role"));
    EXPECT_THAT(as(STRANGER, subscribe), HasSubstr("rpc.subscribe needs the role")) << "its further group counts";
    EXPECT_THAT(as(MEMBER, [] { return answerTo("rpc.discover"); }), HasSubstr("openrpc"));
    EXPECT_THAT(as(MEMBER, [] { return answerTo("IApplicationManager::noSuchMethod"); }), HasSubstr("unknown method"));
}

TEST_F(Role, MayBeWidenedAndNarrowedByTheMethod)
{
    startWithPolicy(R"({"rules":[{"user":"nobody","role":"viewer","methods":{)"
                    R"("IApplicationManager::stop":true,"IApplicationManager::getHistory":false}}]})");
    const std::string uid = launchVictim();
    EXPECT_THAT(as(MEMBER, [] { return answerTo("IApplicationManager::getHistory"); }), HasSubstr("needs the role"));
    EXPECT_EQ(as(MEMBER, [&] { return answerTo("IApplicationManager::stop", R"({"uid":")" + uid + "\"}"); }), "null");
    EXPECT_NE(announcements.take({"IApplicationManager::onStop ", uid}), "");
}

TEST_F(Role, OfAViewerDoesNotHelpToDriveDeedsOutOfTheAudit)
{
    startWithPolicy();
    refusalOf("IApplicationManager::stop", R"({"uid":"unknown"})");
    EXPECT_EQ(as(MEMBER,
                 [] {
                     Corvane::RPCClient client("ORU");
                     int refused = 0;
                     for (int i = 0; i < 1000; ++i)
                         try {
                             client.call("IApplicationManager::launch", R"({"program":"/bin/true"})");
                         } catch (const Corvane::RPCError&) {
                             ++refused;
                         }
                     return std::to_string(refused);
                 }),
              "1000");
    EXPECT_THAT(audit({"IApplicationManager::stop", "unknown"}), SizeIs(1));
    EXPECT_THAT(audit({"refused"}), SizeIs(256));
    // A second's worth of lines or two, and one on those that were left out.
    const std::string log = procmand->getError();
    std::size_t lines = 0;
    for (std::size_t at = log.find("refused"); at != log.npos; at = log.find("refused", at + 1))
        ++lines;
    EXPECT_LT(lines, 500U);
}
