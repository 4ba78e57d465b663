#include "EventQueue.h"

#include <gtest/gtest.h>
#include <limits>
#include <linux/input-event-codes.h>
#include <string>
#include <support/EventText.h>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Texts = std::vector<std::string>;
using Mouse = IWindowEvent::MouseEvent;

EventQueue::EventPointer moveBy(int x, int z = 0)
{
    return std::make_shared<const Mouse>(Mouse::Buttons(), Mouse::Movement(x, -x, z));
}

EventQueue::EventPointer moveTo(int x)
{
    return std::make_shared<const Mouse>(Mouse::Buttons(), Mouse::Position(x, x));
}

EventQueue::EventPointer click(bool isPressed)
{
    return std::make_shared<const Mouse>(Mouse::Buttons(isPressed, false, false, true, false, false));
}

EventQueue::EventPointer press(unsigned int code)
{
    return std::make_shared<const IWindowEvent::KeyEvent>(code, true);
}

/// A queue in which so many keys of another device wait that movement is merged.
class WaitingEvents : public ::testing::Test
{
protected:
    WaitingEvents()
    {
        for (std::size_t i = 0; i < EventQueue::MERGE_FROM; ++i)
            queue.push({press(1), 0, &other});
    }

    /// What waits besides.
    Texts take()
    {
        for (std::size_t i = 0; i < EventQueue::MERGE_FROM; ++i)
            queue.pop();
        Texts texts;
        while (!queue.isEmpty())
            texts.push_back(eventText(*queue.pop().event));
        return texts;
    }

    EventQueue queue;
    const int device = 0;
    const int other = 0;
};

} // namespace

TEST(EventQueue, GivesEachEventAsItCameWhileFewWait)
{
    EventQueue queue;
    const int device = 0;
    for (std::size_t i = 0; i < EventQueue::MERGE_FROM; ++i)
        queue.push({moveBy(static_cast<int>(i) + 1), 7, &device});

    for (std::size_t i = 0; i < EventQueue::MERGE_FROM; ++i) {
        const EventQueue::Entry entry = queue.pop();
        EXPECT_EQ(dynamic_cast<const Mouse&>(*entry.event).getMovement().getDeltaX(), static_cast<int>(i) + 1);
        EXPECT_EQ(entry.sessionIndex, 7U);
    }
    EXPECT_TRUE(queue.isEmpty());
}

TEST_F(WaitingEvents, HaveTheMovementOfADeviceInOneOnceTheyAreMany)
{
    queue.push({moveBy(1), 0, &device});
    queue.push({moveBy(2, 1), 0, &device});
    queue.push({press(KEY_UP), 0, &other});
    queue.push({moveBy(3, 1), 0, &device});

    EXPECT_EQ(take(), (Texts{"mouse by 6,-6,2", "KEY_UP pressed"}));
}

TEST_F(WaitingEvents, HaveTheLastPositionOfADevice)
{
    queue.push({moveTo(1), 0, &device});
    queue.push({moveTo(2), 0, &device});

    EXPECT_EQ(take(), Texts{"mouse at 2,2"});
}

TEST_F(WaitingEvents, HaveThePositionOfADeviceAndAllStepsOfItsWheel)
{
    queue.push({moveTo(3), 0, &device});
    queue.push({moveBy(0, 1), 0, &device});
    queue.push({moveBy(0, 1), 0, &device});

    EXPECT_EQ(take(), Texts{"mouse at 3,3 by 0,0,2"});
}

TEST_F(WaitingEvents, KeepKeysAndButtonsInTheirPlaceAmongTheMovement)
{
    queue.push({moveBy(1), 0, &device});
    queue.push({click(true), 0, &device});
    queue.push({click(false), 0, &device});
    queue.push({moveBy(2), 0, &device});
    queue.push({press(BTN_SIDE), 0, &device});
    queue.push({moveBy(3), 0, &device});
    queue.push({moveBy(4), 0, &device});

    EXPECT_EQ(take(), (Texts{"mouse by 1,-1,0", "mouse left pressed", "mouse left released", "mouse by 2,-2,0",
                             "BTN_SIDE pressed", "mouse by 7,-7,0"}));
}

TEST_F(WaitingEvents, OfTwoDevicesOrSessionsOrOfAnApplicationAreNotMerged)
{
    queue.push({moveBy(1), 0, &device});
    queue.push({moveBy(2), 0, &other});
    queue.push({moveBy(3), 1, &device});
    queue.push({moveBy(4), 0, nullptr});
    queue.push({moveBy(5), 0, nullptr});

    EXPECT_EQ(take(),
              (Texts{"mouse by 1,-1,0", "mouse by 2,-2,0", "mouse by 3,-3,0", "mouse by 4,-4,0", "mouse by 5,-5,0"}));
}

TEST_F(WaitingEvents, StopAtTheEndsOfTheRangeOfNumbers)
{
    queue.push({moveBy(std::numeric_limits<int>::max()), 0, &device});
    queue.push({moveBy(std::numeric_limits<int>::max()), 0, &device});

    EXPECT_EQ(take(), Texts{"mouse by 2147483647,-2147483648,0"});
}

TEST_F(WaitingEvents, FillTheQueueAtItsLimit)
{
    for (std::size_t i = EventQueue::MERGE_FROM; i < EventQueue::LIMIT; ++i) {
        EXPECT_FALSE(queue.isFull());
        queue.push({press(2), 0, &device});
    }
    EXPECT_TRUE(queue.isFull());

    queue.pop();
    EXPECT_FALSE(queue.isFull());
}

} // namespace Corvane::Test
