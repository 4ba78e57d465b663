#include "screen/WindowStack.h"

#include "screen/Placement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace Procmand
{
namespace
{

using CreationSettings = Corvane::ISurfaceManagement::CreationSettings;
using testing::ElementsAre;

constexpr unsigned int HIGHEST = std::numeric_limits<unsigned int>::max();

class WindowStackTest : public testing::Test
{
protected:
    unsigned int add(const std::string& uid, unsigned int zOrder = 0)
    {
        return stack.add(uid, CreationSettings(0, {0, 0, 10, 10}, zOrder, 255, true)).index;
    }
    /// The uids with their z-orders, from the back to the front.
    std::vector<std::string> order() const
    {
        std::vector<std::string> result;
        for (const WindowState& window : stack.getWindows())
            result.push_back(window.uid + " " + std::to_string(window.zOrder));
        return result;
    }

    WindowStack stack{4};
};

} // namespace

TEST_F(WindowStackTest, IsOrderedByZOrderAndThenByAge)
{
    add("a", 5);
    add("b", 1);
    add("c", 5);
    add("d", 3);

    EXPECT_THAT(order(), ElementsAre("b 1", "d 3", "a 5", "c 5"));
    EXPECT_TRUE(stack.isFull());
}

TEST_F(WindowStackTest, NeverUsesAnIndexAgain)
{
    const unsigned int first = add("a");
    stack.remove(first);
    const unsigned int second = add("b");

    EXPECT_NE(first, 0U);
    EXPECT_NE(second, first);
    EXPECT_EQ(stack.find(first), nullptr);
}

TEST_F(WindowStackTest, CountsOnBehindTheIndicesThatItRestores)
{
    stack.restore({.index = 7, .uid = "a"});

    EXPECT_EQ(add("b"), 8U);
}

TEST_F(WindowStackTest, BeginsAnewBehindTheHighestIndexAndLeavesOutWhatIsInUse)
{
    stack.restore({.index = HIGHEST, .uid = "a"});
    stack.restore({.index = 1, .uid = "b"});

    EXPECT_EQ(add("c"), 2U) << "0 is no window, and 1 is in use";
}

TEST_F(WindowStackTest, PutsAWindowInFrontOfThoseWithTheZOrderThatItGets)
{
    const unsigned int a = add("a", 1);
    add("b", 2);
    stack.setZOrder(a, 2);

    EXPECT_THAT(order(), ElementsAre("b 2", "a 2"));
}

TEST_F(WindowStackTest, LeavesAWindowInItsPlaceThatHasTheZOrderAlready)
{
    const unsigned int a = add("a", 2);
    add("b", 2);
    stack.setZOrder(a, 2);

    EXPECT_THAT(order(), ElementsAre("a 2", "b 2"));
}

TEST_F(WindowStackTest, BringsToTheFrontAndSendsToTheBack)
{
    const unsigned int a = add("a", 3);
    add("b", 3);
    const unsigned int c = add("c", 9);
    stack.bringToFront(a);
    EXPECT_THAT(order(), ElementsAre("b 3", "c 9", "a 10"));

    stack.sendToBack(c);
    EXPECT_THAT(order(), ElementsAre("c 2", "b 3", "a 10"));

    stack.bringToFront(a);
    stack.sendToBack(c);
    EXPECT_THAT(order(), ElementsAre("c 2", "b 3", "a 10")) << "who is there already stays as it is";
}

TEST_F(WindowStackTest, MovesByOneAndExchangesTheZOrders)
{
    const unsigned int a = add("a", 1);
    add("b", 4);
    const unsigned int c = add("c", 6);
    stack.bringForward(a);
    EXPECT_THAT(order(), ElementsAre("b 1", "a 4", "c 6"));

    stack.sendBackward(c);
    EXPECT_THAT(order(), ElementsAre("b 1", "c 4", "a 6"));

    stack.bringForward(a);
    EXPECT_THAT(order(), ElementsAre("b 1", "c 4", "a 6")) << "nothing is in front of it";
}

TEST_F(WindowStackTest, StacksAtTheEndsOfTheNumbersByOrderAlone)
{
    const unsigned int a = add("a", 0);
    const unsigned int b = add("b", HIGHEST);
    stack.bringToFront(a);
    EXPECT_THAT(order(), ElementsAre("b 4294967295", "a 4294967295"));

    stack.setZOrder(b, 0);
    stack.sendToBack(a);
    EXPECT_THAT(order(), ElementsAre("a 0", "b 0"));
}

TEST_F(WindowStackTest, KeepsTheOpacityInItsRange)
{
    const unsigned int a = stack.add("a", CreationSettings(0, {0, 0, 1, 1}, 0, 300, true)).index;
    EXPECT_EQ(stack.find(a)->opacity, 255U);
    stack.setOpacity(a, 7);
    EXPECT_EQ(stack.find(a)->opacity, 7U);
    stack.setOpacity(a, 256);
    EXPECT_EQ(stack.find(a)->opacity, 255U);
}

TEST_F(WindowStackTest, RefusesEveryOperationOnAWindowThatIsNotThere)
{
    add("a");

    EXPECT_THROW(stack.setVisibility(9, true), std::out_of_range);
    EXPECT_THROW(stack.setOpacity(9, 1), std::out_of_range);
    EXPECT_THROW(stack.setZOrder(9, 1), std::out_of_range);
    EXPECT_THROW(stack.setLocation(9, {1, 2, 3, 4}), std::out_of_range);
    EXPECT_THROW(stack.bringToFront(9), std::out_of_range);
    EXPECT_THROW(stack.sendToBack(9), std::out_of_range);
    EXPECT_THROW(stack.bringForward(9), std::out_of_range);
    EXPECT_THROW(stack.sendBackward(9), std::out_of_range);
    EXPECT_THROW(stack.remove(9), std::out_of_range);
    EXPECT_THAT(order(), ElementsAre("a 0"));
}

TEST_F(WindowStackTest, PutsAWindowBehindThoseThatWereInFrontOfIt)
{
    add("a");
    add("b");
    add("c", 1);
    const unsigned int d = add("d");
    stack.putBehind(d, {"c", "gone"});
    EXPECT_THAT(order(), ElementsAre("a 0", "b 0", "d 0", "c 1")) << "the z-order counts more";
    stack.putBehind(d, {"b"});
    EXPECT_THAT(order(), ElementsAre("a 0", "d 0", "b 0", "c 1"));
    stack.putBehind(d, {"b", "a"});
    EXPECT_THAT(order(), ElementsAre("d 0", "a 0", "b 0", "c 1"));
    stack.putBehind(d, {"b"});
    EXPECT_THAT(order(), ElementsAre("d 0", "a 0", "b 0", "c 1")) << "it is behind it already";
}

TEST_F(WindowStackTest, TellsThePlaceOfTheOldestWindowOfAnApplication)
{
    add("a");
    const unsigned int oldest = add("b");
    add("c");
    add("b");
    stack.setOpacity(oldest, 7);
    stack.setVisibility(oldest, false);
    EXPECT_FALSE(Placement::find(stack.getWindows(), "d"));
    const auto placement = Placement::find(stack.getWindows(), "b");
    ASSERT_TRUE(placement);
    EXPECT_EQ(placement->window.index, oldest);
    EXPECT_THAT(placement->front, ElementsAre("c", "b"));

    const CreationSettings settings = placement->apply(CreationSettings(3, {1, 2, 3, 4}, 5, 6, true));
    EXPECT_EQ(settings.getSessionIndex(), 3U);
    EXPECT_EQ(settings.getLocation().getWidth(), 10U);
    EXPECT_EQ(settings.getZOrder(), 0U);
    EXPECT_EQ(settings.getOpacity(), 7U);
    EXPECT_TRUE(settings.getVisibility());
}

} // namespace Procmand
