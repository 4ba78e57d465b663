#include "ProcmandFixture.h"

#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::HasSubstr;

namespace
{

class ProcmandFocus : public WithProcmand
{
protected:
    void start() { startProcmand({"--call-deadline", "0.3", "--keep-alive-deadline", "60"}); }
    void request(const std::string& uid, bool focus)
    {
        call("IWindowCompositing::setFocus",
             R"({"uid":")" + uid + R"(","obtained":)" + (focus ? "true" : "false") + "}");
    }
    std::string launchFocused()
    {
        std::string uid = launchVictim();
        request(uid, true);
        EXPECT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + uid}), "");
        return uid;
    }
    std::size_t countMoves() { return announcements.count({"IWindowCompositing::onFocusMove"}); }
};

} // namespace

TEST_F(ProcmandFocus, ThatFailedIsNoMoveFromNobodyToNobody)
{
    start();
    const std::string frozen = launchVictim();
    freeze(frozen);
    request(frozen, true);

    EXPECT_THAT(announcements.take({"IWindowCompositing::onFocusFailure", frozen}), HasSubstr("Timed out"));
    EXPECT_EQ(countMoves(), 0U);
}

TEST_F(ProcmandFocus, ThatFailedIsGivenBackToTheWindowThatHadIt)
{
    start();
    const std::string owner = launchFocused();
    const std::string frozen = launchVictim();
    freeze(frozen);
    request(frozen, true);

    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusFailure", frozen}), "");
    EXPECT_EQ(find(owner)["focus"], "true");
    EXPECT_EQ(corvanectl({"focus", owner}).output, "on\n");
    EXPECT_EQ(countMoves(), 1U) << "the first one";
}

TEST_F(ProcmandFocus, ThatFailedIsLostWhereTheOldWindowCannotBeToldEither)
{
    start();
    const std::string owner = launchFocused();
    const std::string other = launchVictim();
    freeze(owner);
    freeze(other);
    request(other, true);

    EXPECT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + owner + R"(","uid":"")"}), "");
    EXPECT_NE(announcements.take({"IWindowCompositing::onFocusFailure", other}), "");
    EXPECT_EQ(find(owner)["focus"], "false");
}

TEST_F(ProcmandFocus, ThatCannotBeTakenAwayStays)
{
    start();
    const std::string owner = launchFocused();
    freeze(owner);
    request(owner, false);

    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusFailure", owner}), "");
    EXPECT_EQ(find(owner)["focus"], "true");
    EXPECT_EQ(countMoves(), 1U);
}
