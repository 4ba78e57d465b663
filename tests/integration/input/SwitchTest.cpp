#include "InputFixture.h"

#include <atomic>
#include <thread>

/// Classes of devices that are turned on and off.
namespace Corvane::Test
{

using InputSwitch = InputTest;

TEST_F(InputSwitch, LeavesADeviceClosedUntilItsClassIsEnabled)
{
    MockDevice pointer(machine, mouse());
    MockDevice remote(machine, infrared());
    driver.start();
    driver.enableMouse();
    ASSERT_TRUE(awaitOpen(pointer));
    EXPECT_FALSE(remote.isOpen());

    remote.press(KEY_OK);
    pointer.report({{EV_REL, REL_X, 1}});
    EXPECT_EQ(listener.take(), "mouse by 1,0,0");

    driver.enableIr();
    EXPECT_TRUE(awaitOpen(remote));
}

TEST_F(InputSwitch, ClosesTheDevicesOfAClassThatIsDisabledAndNoOthers)
{
    MockDevice pointer(machine, mouse());
    MockDevice keys(machine, keyboard());
    enableAll();
    driver.start();
    ASSERT_TRUE(awaitOpen(pointer) && awaitOpen(keys));

    driver.disableMouse();

    EXPECT_TRUE(awaitClosed(pointer));
    keys.press(KEY_A);
    EXPECT_EQ(listener.take(), "'a' pressed");
    EXPECT_TRUE(keys.isOpen());
}

TEST_F(InputSwitch, ReleasesWhatIsHeldWhenAClassIsDisabled)
{
    MockDevice pointer(machine, mouse());
    MockDevice keys(machine, keyboard());
    enableAll();
    driver.start();
    keys.press(KEY_LEFTSHIFT);
    keys.press(KEY_A);
    ASSERT_EQ(listener.take(2), (Texts{"KEY_LEFTSHIFT pressed", "'A' pressed"}));
    pointer.press(BTN_MIDDLE);
    ASSERT_EQ(listener.take(), "mouse middle pressed");

    driver.disableKeyboard();
    EXPECT_EQ(listener.take(2), (Texts{"'A' released", "KEY_LEFTSHIFT released"}));
    driver.disableMouse();
    EXPECT_EQ(listener.take(), "mouse middle released");
}

TEST_F(InputSwitch, OpensADeviceAgain)
{
    MockDevice pointer(machine, mouse());
    driver.enableMouse();
    driver.start();
    ASSERT_TRUE(awaitOpen(pointer));
    driver.disableMouse();
    ASSERT_TRUE(awaitClosed(pointer));
    driver.enableMouse();

    pointer.report({{EV_REL, REL_X, 1}});

    EXPECT_EQ(listener.take(), "mouse by 1,0,0");
}

TEST_F(InputSwitch, LosesNoReleaseWhileEventsFlow)
{
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    enableAll();
    driver.start();
    std::atomic<bool> done{false};
    std::thread hand([&] {
        while (!done) {
            remote.press(KEY_OK);
            remote.release(KEY_OK);
        }
    });
    for (int i = 0; i < 100; ++i) {
        driver.disableIr();
        driver.enableIr();
        // One event has come through since.
        EXPECT_NE(listener.take(), "nothing");
    }
    done = true;
    hand.join();
    driver.disableIr();
    ASSERT_TRUE(awaitClosed(remote));
    pointer.report({{EV_REL, REL_X, 1}});

    int held = 0;
    for (std::string text = listener.take(); text != "mouse by 1,0,0"; text = listener.take()) {
        ASSERT_NE(text, "nothing");
        held += text == "KEY_OK pressed" ? 1 : -1;
        ASSERT_TRUE(held == -1 || held == 0 || held == 1);
    }
}

TEST_F(InputSwitch, LetsTheDriverSleepWhileNothingHappens)
{
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    enableAll();
    driver.enableHotplug();
    driver.start();
    remote.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    ASSERT_TRUE(awaitOpen(pointer));
    // One that hung up must not keep it awake either.
    pointer.hangUp();
    ASSERT_TRUE(awaitClosed(pointer));

    ASSERT_TRUE(await([] { return readDriverStatus("State").starts_with("S"); }));
    const auto countSleeps = [] { return readDriverStatus("voluntary_ctxt_switches"); };
    const std::string before = countSleeps();
    // Were there a period, or a descriptor that is ready for ever, it would show in this time.
    await([&] { return countSleeps() != before; }, std::chrono::milliseconds(300));

    EXPECT_EQ(countSleeps(), before);
    EXPECT_TRUE(readDriverStatus("State").starts_with("S"));
}

} // namespace Corvane::Test
