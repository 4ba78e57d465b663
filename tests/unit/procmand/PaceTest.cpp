#include "supervision/Pace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Procmand
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class PaceTest : public testing::Test
{
protected:
    PaceTest() { pace.update(now); }

    /// Says something. @return whether it is to be passed on now
    bool say(std::string name, std::string payload = "{}") { return pace.count(name, payload); }
    void sayUpToTheLimit()
    {
        for (unsigned int i = 0; i < Pace::PASS_LIMIT; ++i)
            EXPECT_TRUE(say("IWindow::onOpacityChange"));
    }

    Pace::Clock::time_point now{std::chrono::hours(1)};
    Pace pace;
};

} // namespace

TEST_F(PaceTest, PassesEverythingOnUpToALimit)
{
    sayUpToTheLimit();
    EXPECT_FALSE(pace.isExceeded());
    EXPECT_FALSE(pace.isSpent());

    pace.update(now += Pace::TURN);
    sayUpToTheLimit();
    EXPECT_FALSE(pace.isExceeded());
}

TEST_F(PaceTest, MergesTheChangesOfAPropertyBeyondIt)
{
    sayUpToTheLimit();
    EXPECT_FALSE(say("IWindow::onOpacityChange", "1"));
    EXPECT_FALSE(say("IWindow::onLocationChange", "2"));
    EXPECT_FALSE(say("IWindow::onOpacityChange", "3"));
    EXPECT_TRUE(pace.isExceeded());
    EXPECT_EQ(pace.countReplaced(), 1U);
    pace.update(now += Pace::TURN);
    EXPECT_TRUE(pace.isExceeded()) << "what is merged is not lost by a turn that nobody ended";

    EXPECT_THAT(pace.renew(now),
                ElementsAre(Pair("IWindow::onOpacityChange", "3"), Pair("IWindow::onLocationChange", "2")));
    EXPECT_FALSE(pace.isExceeded());
    EXPECT_TRUE(say("IWindow::onOpacityChange"));
    EXPECT_THAT(pace.renew(now), IsEmpty());
}

TEST_F(PaceTest, PassesEveryChangeOfStateAndFocusOnUntilItIsSpent)
{
    sayUpToTheLimit();
    for (unsigned int i = Pace::PASS_LIMIT; i < Pace::STATE_LIMIT; ++i) {
        EXPECT_FALSE(pace.isSpent());
        EXPECT_TRUE(say(i % 2 == 0 ? "IApplication::onStateChange" : "IWindow::onFocusChange"));
    }
    EXPECT_TRUE(pace.isSpent());
    pace.renew(now);
    EXPECT_FALSE(pace.isSpent());
}

TEST_F(PaceTest, IsSpentWhenTooMuchWasRead)
{
    for (unsigned int i = 0; i < Pace::READ_LIMIT; ++i) {
        EXPECT_FALSE(pace.isSpent());
        say("IApplication::onKeepAlive");
    }
    EXPECT_TRUE(pace.isSpent());
}

TEST_F(PaceTest, ForgetsTheOldestOfMoreThanItTellsApart)
{
    sayUpToTheLimit();
    for (std::size_t i = 0; i <= Pace::MERGE_LIMIT; ++i)
        say("IWindow::onChange" + std::to_string(i));
    const auto merged = pace.renew(now);
    EXPECT_EQ(merged.size(), Pace::MERGE_LIMIT);
    EXPECT_EQ(merged.front().first, "IWindow::onChange1");
}

} // namespace Procmand
