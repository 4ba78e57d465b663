#include "access/Policy.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Procmand
{
namespace
{

std::string problemWith(const std::string& policy)
{
    try {
        Policy::read(policy);
        return "none";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

std::string problemWithRule(const std::string& rule)
{
    return problemWith(R"({"rules":[)" + rule + "]}");
}

} // namespace

TEST(PolicyTest, SaysWhatIsWrongWithAFile)
{
    EXPECT_EQ(problemWith("{}"), "none");
    EXPECT_EQ(problemWith(R"({"rules":[],"environment":["APP_*"]})"), "none");
    EXPECT_EQ(problemWith("[]"), "the policy: expected an object");
    EXPECT_EQ(problemWith(R"({"rule":[]})"), "rule: there is no such member; there are rules and environment");
    EXPECT_EQ(problemWith(R"({"rules":{}})"), "rules: expected an array of objects");
    EXPECT_EQ(problemWith(R"({"environment":[1]})"), "environment: expected a text");
    EXPECT_EQ(problemWithRule("1"), "a rule: expected an object");
    EXPECT_EQ(problemWithRule(R"({"role":"viewer"})"), "a rule: expected one of user, group and application");
    EXPECT_EQ(problemWithRule(R"({"user":"root","group":"root","role":"viewer"})"),
              "a rule: expected one of user, group and application");
    EXPECT_EQ(problemWithRule(R"({"user":"root"})"), "a rule: expected a role");
    EXPECT_EQ(problemWithRule(R"({"user":"root","role":"god"})"),
              "role: expected none, application, viewer or manager");
    EXPECT_EQ(problemWithRule(R"({"group":"no-such-group","role":"viewer"})"),
              "group: there is no group no-such-group");
    EXPECT_EQ(problemWithRule(R"({"user":"root","role":"viewer","methods":{"I::f":1}})"),
              "I::f: expected true or false");
    EXPECT_EQ(problemWithRule(R"({"user":"root","role":"viewer","users":"*"})"), "users: expected an array of texts");
}

TEST(PolicyTest, GivesALaunchedApplicationThatRoleWhateverItsUser)
{
    const Caller self = Caller::getCurrent();
    const Policy policy = Policy::read(R"({"rules":[{"user":")" + std::to_string(self.getUser()) +
                                       R"(","role":"manager"},{"application":"home","role":"viewer"}]})");
    const std::string home = "home";
    const std::string other = "other";
    const std::string nameless;
    EXPECT_EQ(policy.findRights(self, nullptr).role, Role::MANAGER);
    EXPECT_EQ(policy.findRights(self, &nameless).role, Role::APPLICATION);
    EXPECT_EQ(policy.findRights(self, &other).role, Role::APPLICATION);
    EXPECT_EQ(policy.findRights(self, &home).role, Role::VIEWER);
}

TEST(PolicyTest, PassesFewVariablesToAnotherUserAndNoneOfTheLoader)
{
    const Policy policy = Policy::read(R"({"environment":["APP_*","MODE","LD_PRELOAD","*"]})");
    for (const char* const allowed : {"LANG", "LC_ALL", "CORVANE_DEBUG_LEVEL", "APP_X", "MODE", "PATH"})
        EXPECT_TRUE(policy.mayPass(allowed)) << allowed;
    EXPECT_FALSE(policy.mayPass("LD_PRELOAD"));
    EXPECT_FALSE(policy.mayPass("LD_LIBRARY_PATH"));
    for (const char* const refused : {"PATH", "HOME", "DFBARGS", "CORVANE_RUNTIME_DIR", "APP_X", ""})
        EXPECT_FALSE(Policy().mayPass(refused)) << refused;
}

TEST(PolicyTest, LetsARoleDoWhatItsTableSaysUnlessARuleSaysMore)
{
    Rights rights{
        .role = Role::VIEWER, .methods = {{"I::more", true}, {"IWindowCompositing::getWindows", false}}, .users = {}};
    EXPECT_EQ(rights.extentOf("IApplicationManager::getApplications"), Extent::ALL);
    EXPECT_EQ(rights.extentOf("IWindowCompositing::getWindows"), Extent::NOTHING);
    EXPECT_EQ(rights.extentOf("IWindowCompositing::setOpacity"), Extent::NOTHING);
    EXPECT_EQ(rights.extentOf("I::more"), Extent::ALL);
    EXPECT_EQ(extentOf(Role::APPLICATION, "IWindowCompositing::setOpacity"), Extent::OWN);
    EXPECT_EQ(extentOf(Role::NONE, "IWindowCompositing::getWindows"), Extent::NOTHING);
    EXPECT_EQ(extentOf(Role::MANAGER, "I::anything"), Extent::ALL);
    EXPECT_EQ(rolesFor("IWindowCompositing::getOpacity"), "application or viewer or manager");
    EXPECT_EQ(rolesFor("IApplicationManager::launch"), "manager");
}

} // namespace Procmand
