#include "InputFixture.h"

#include <semaphore>
#include <thread>
#include <utility>

/// Listeners that take long, as one that draws does.
namespace Corvane::Test
{

namespace
{

/// Stays in its first call until it may return, however long that takes.
class HoldingListener : public InputRecorder
{
public:
    int onInputEvent(const IWindowEvent::InputEvent& event) override
    {
        InputRecorder::onInputEvent(event);
        if (!std::exchange(hasHeld, true))
            mayReturn.acquire();
        return 0;
    }

    std::binary_semaphore mayReturn{0};

private:
    bool hasHeld = false;
};

/// A driver whose only listener is in its call, for a key of a remote control.
class StalledListener : public InputTest
{
protected:
    StalledListener()
    {
        driver.removeInputEventListener(&listener);
        driver.addInputEventListener(&holding, 0);
        enableAll();
        driver.start();
        EXPECT_TRUE(awaitOpen(device) && awaitOpen(remote));
        remote.press(KEY_OK);
        EXPECT_EQ(holding.take(), "KEY_OK pressed");
    }
    ~StalledListener() override
    {
        holding.mayReturn.release();
        driver.removeInputEventListener(&holding);
    }

    static bool awaitRead(const MockDevice& device)
    {
        return await([&] { return !device.hasUnread(); });
    }

    HoldingListener holding;
    MockDevice device{machine, keyboardWithTrackBall()};
    MockDevice remote{machine, infrared()};
};

} // namespace

TEST_F(StalledListener, DoesNotKeepTheDevicesFromBeingRead)
{
    Texts expected;
    for (int tap = 0; tap < 12; ++tap) {
        device.press(KEY_A);
        device.release(KEY_A);
        expected.insert(expected.end(), {"'a' pressed", "'a' released"});
        ASSERT_TRUE(awaitRead(device));
    }
    EXPECT_TRUE(holding.events.isEmpty());
    holding.mayReturn.release();

    EXPECT_EQ(holding.take(expected.size()), expected);
}

TEST_F(StalledListener, HearsTheMovementOfAllThatTimeInFewEventsBetweenTheRightKeys)
{
    constexpr int COUNT = 5000;
    const auto move = [&] {
        for (int i = 0; i < COUNT; ++i)
            device.report({{EV_REL, REL_X, 1}, {EV_REL, REL_WHEEL, -2}});
    };
    move();
    device.press(KEY_A);
    move();
    device.press(BTN_LEFT);
    ASSERT_TRUE(awaitRead(device)); // what is read after the listener has returned is not merged
    holding.mayReturn.release();

    // However the movement was merged, this is its sum, and the number of its events.
    const auto take = [&](const std::string& end) {
        std::pair<int, int> sum{};
        int events = 0;
        for (std::string text = holding.take(); text != end && text != "nothing"; text = holding.take()) {
            int x = 0, y = 0, z = 0;
            EXPECT_EQ(std::sscanf(text.c_str(), "mouse by %d,%d,%d", &x, &y, &z), 3) << text;
            sum.first += x;
            sum.second += z;
            ++events;
        }
        EXPECT_LT(events, 1000);
        return sum;
    };
    EXPECT_EQ(take("'a' pressed"), std::pair(COUNT, 2 * COUNT));
    EXPECT_EQ(take("mouse left pressed"), std::pair(COUNT, 2 * COUNT));
}

TEST_F(StalledListener, LeavesWhatTheQueueDoesNotHoldInTheDeviceAndTheReaderAsleep)
{
    constexpr int TAPS = 5000;
    std::thread hand([&] {
        for (int tap = 0; tap < TAPS; ++tap) {
            device.press(KEY_A);
            device.release(KEY_A);
        }
    });
    // The queue is full, and so is the device in the end.
    EXPECT_TRUE(await([&] { return device.hasUnread() && isThreadAsleep("InputReader"); }));
    const std::string before = countThreadSleeps("InputReader");
    // Were it going round, it would show in this time.
    await([&] { return countThreadSleeps("InputReader") != before; }, std::chrono::milliseconds(300));
    EXPECT_TRUE(device.hasUnread());
    EXPECT_EQ(countThreadSleeps("InputReader"), before);
    holding.mayReturn.release();

    int wrong = 0;
    for (int i = 0; i < 2 * TAPS; ++i)
        wrong += holding.take() != (i % 2 == 0 ? "'a' pressed" : "'a' released");
    hand.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(holding.events.isEmpty());
}

TEST_F(StalledListener, KeepsNoClassFromBeingSwitchedAndNoDeviceFromBeingPluggedIn)
{
    driver.disableMouse();
    driver.disableKeyboard();
    EXPECT_TRUE(awaitClosed(device));
    driver.enableHotplug();
    MockDevice later(machine, infrared());
    EXPECT_TRUE(awaitOpen(later));

    driver.enableKeyboard();
    EXPECT_TRUE(awaitOpen(device));
}

TEST_F(StalledListener, MayBeRemovedWhichWaitsForItsCallAndTheNextOneHearsTheRest)
{
    device.press(KEY_A);
    ASSERT_TRUE(awaitRead(device));
    InputRecorder next;
    driver.addInputEventListener(&next, 0);
    std::thread remover([&] { driver.removeInputEventListener(&holding); });
    holding.mayReturn.release();
    remover.join();

    EXPECT_EQ(next.take(), "'a' pressed");
    driver.removeInputEventListener(&next);
}

TEST_F(InputTest, QuickListenerGetsItsEventsWithoutAChangeOfThreads)
{
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();
    ASSERT_TRUE(awaitOpen(remote) && await(isDriverAsleep));
    const std::string before = countThreadSleeps("InputReader");

    for (int tap = 0; tap < 50; ++tap) {
        remote.press(KEY_OK);
        ASSERT_EQ(listener.take(), "KEY_OK pressed");
        // Until the call has returned: what comes earlier is the reader's.
        ASSERT_TRUE(await([] { return isThreadAsleep("InputDriver"); }));
        remote.release(KEY_OK);
        ASSERT_EQ(listener.take(), "KEY_OK released");
        ASSERT_TRUE(await([] { return isThreadAsleep("InputDriver"); }));
    }

    EXPECT_EQ(countThreadSleeps("InputReader"), before);
}

} // namespace Corvane::Test
