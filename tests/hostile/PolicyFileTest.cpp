#include "HostileFixture.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::HasSubstr;

namespace
{

constexpr char GENEROUS[] = R"({"rules":[{"user":"nobody","role":"manager"}]})";

/// A policy that is not to be believed: nobody but root has a role then.
class PolicyFile : public WithOtherUsers
{
protected:
    void expectUnused(const std::string& reason)
    {
        startProcmand({"--policy", getPolicyFile()});
        EXPECT_THAT(procmand->getError(),
                    AllOf(HasSubstr("the policy " + getPolicyFile() + " is not used"), HasSubstr(reason)));
        EXPECT_THAT(as(MEMBER, [] { return answerTo("IApplicationManager::getApplications"); }),
                    HasSubstr("this caller has no role"));
        EXPECT_EQ(call("IApplicationManager::getApplications"), "[]");
    }
    void writePolicy(const std::string& text, mode_t mode = 0644)
    {
        std::ofstream(getPolicyFile()) << text;
        ASSERT_EQ(chmod(getPolicyFile().c_str(), mode), 0);
    }
};

} // namespace

TEST_F(PolicyFile, IsNotUsedWhenItsGroupMayWriteIt)
{
    writePolicy(GENEROUS, 0664);
    expectUnused("others than its owner may write it");
}

TEST_F(PolicyFile, IsNotUsedWhenAnybodyMayWriteIt)
{
    writePolicy(GENEROUS, 0646);
    expectUnused("others than its owner may write it");
}

TEST_F(PolicyFile, IsNotUsedWhenItBelongsToSomebodyElse)
{
    writePolicy(GENEROUS);
    ASSERT_EQ(chown(getPolicyFile().c_str(), MEMBER.id, 0), 0);
    expectUnused("it belongs neither to root nor to the process manager's user");
}

TEST_F(PolicyFile, IsNotUsedWhenItIsALink)
{
    const std::string target = state.getPath() + "/target.json";
    std::ofstream(target) << GENEROUS;
    std::filesystem::create_symlink(target, getPolicyFile());
    expectUnused("it cannot be opened");
}

TEST_F(PolicyFile, IsNotWaitedForWhenItIsAPipe)
{
    ASSERT_EQ(mkfifo(getPolicyFile().c_str(), 0600), 0);
    expectUnused("it is no file");
}

TEST_F(PolicyFile, IsNotUsedWhenItIsNoJson)
{
    writePolicy(R"({"rules":[)");
    expectUnused("The JSON document");
}

TEST_F(PolicyFile, IsNotUsedWhenItNamesAUserWhoDoesNotExist)
{
    writePolicy(R"({"rules":[{"user":"no-such-user","role":"manager"}]})");
    expectUnused("user: there is no user no-such-user");
}

TEST_F(PolicyFile, IsNotUsedWhenAWordOfItIsUnknown)
{
    writePolicy(R"({"rules":[{"user":"nobody","role":"viewer","method":{"IApplicationManager::stop":false}}]})");
    expectUnused("method: a rule has user, group or application, role, and may have methods and users");
}
