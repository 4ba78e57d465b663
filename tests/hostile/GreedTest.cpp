#include "HostileFixture.h"

#include <gmock/gmock.h>
#include <unistd.h>

using namespace Corvane::Test;
using testing::HasSubstr;

/// Who wants more than the share of one client.
using Greed = WithAttackers;

TEST_F(Greed, GetsSixteenWindows)
{
    startWithPolicy();
    for (int i = 0; i < 16; ++i)
        ASSERT_THAT(call("IResourceAcquisition::getResource", windowFor("greedy", getpid())),
                    HasSubstr(R"("state":3)"));
    EXPECT_THAT(call("IResourceAcquisition::getResource", windowFor("greedy", getpid())), HasSubstr(R"("state":2)"));
    EXPECT_THAT(call("IResourceAcquisition::getResource", windowFor("again", getpid())), HasSubstr(R"("state":2)"))
        << "another name makes no other client";
    EXPECT_THAT(inChild([] { return answerTo("IResourceAcquisition::getResource", windowFor("other", getpid())); }),
                HasSubstr(R"("state":3)"));
}

TEST_F(Greed, RegistersSixteenApplications)
{
    startWithPolicy();
    for (int i = 0; i < 16; ++i)
        ASSERT_EQ(call("IApplicationManager::registerApplication", registrationOf("a" + std::to_string(i), getpid())),
                  "null");
    EXPECT_EQ(refusalOf("IApplicationManager::registerApplication", registrationOf("more", getpid())),
              "process " + std::to_string(getpid()) + " has registered 16 applications already");
}

TEST_F(Greed, HasSixtyFourMovesOfTheFocusWaiting)
{
    startWithPolicy("", {"--call-deadline", "30"});
    const std::string uid = launchVictim();
    // The first one waits for an answer, and the others for the first one.
    freeze(uid);
    std::string refusal;
    for (int i = 0; i < 65; ++i)
        refusal = answerTo("IWindowCompositing::setFocus", R"({"uid":")" + uid + R"(","obtained":true})");
    EXPECT_EQ(refusal, "too many moves of the focus wait already");
}
