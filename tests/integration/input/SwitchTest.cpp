#include "InputFixture.h"

#include <atomic>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

/// The parts of a device are switched each by its own class.
class DeviceOfTwoClasses : public InputTest
{
protected:
    DeviceOfTwoClasses() { driver.start(); }

    /// Waits until the switches that were turned before have had their effect.
    void settle()
    {
        driver.enableIr();
        EXPECT_TRUE(awaitOpen(remote));
        driver.disableIr();
        EXPECT_TRUE(awaitClosed(remote));
    }

    MockDevice device{machine, keyboardWithTrackBall()};
    MockDevice remote{machine, infrared()};
};

TEST_F(DeviceOfTwoClasses, HasAKeyboardThatFollowsTheKeyboards)
{
    driver.enableKeyboard();
    ASSERT_TRUE(awaitOpen(device));

    device.report({{EV_REL, REL_X, 1}, {EV_KEY, BTN_LEFT, 1}});
    device.report({{EV_KEY, BTN_LEFT, 0}});
    device.press(KEY_LEFTSHIFT);
    device.press(KEY_A);

    EXPECT_EQ(listener.take(2), (Texts{"KEY_LEFTSHIFT pressed", "'A' pressed"}));
}

TEST_F(DeviceOfTwoClasses, HasAPointerThatFollowsTheMice)
{
    driver.enableMouse();
    ASSERT_TRUE(awaitOpen(device));

    device.press(KEY_A);
    device.release(KEY_A);
    device.report({{EV_REL, REL_X, 1}, {EV_KEY, BTN_LEFT, 1}});

    EXPECT_EQ(listener.take(), "mouse left pressed by 1,0,0");
}

TEST_F(DeviceOfTwoClasses, LightsCapsLockAndTakesItFromTheLightWhenItsKeysAreEnabledAgain)
{
    driver.enableMouse();
    for (const char* const character : {"'A'", "'a'"}) {
        driver.enableKeyboard();
        settle();
        device.press(KEY_CAPSLOCK);
        device.release(KEY_CAPSLOCK);
        ASSERT_EQ(listener.take(2), (Texts{"KEY_CAPSLOCK pressed", "KEY_CAPSLOCK released"}));
        driver.disableKeyboard();
        settle();
        driver.enableKeyboard();
        settle();

        device.press(KEY_A);
        EXPECT_EQ(listener.take(), std::string(character) + " pressed");
        device.release(KEY_A);
        EXPECT_EQ(listener.take(), std::string(character) + " released");
    }
}

TEST_F(DeviceOfTwoClasses, GoesOnTypingWhenTheMouseIsDisabled)
{
    driver.enableMouse();
    driver.enableKeyboard();
    settle();
    device.press(KEY_A);
    device.press(BTN_LEFT);
    ASSERT_EQ(listener.take(2), (Texts{"'a' pressed", "mouse left pressed"}));

    driver.disableMouse();
    EXPECT_EQ(listener.take(), "mouse left released");
    device.report({{EV_REL, REL_X, 1}});
    device.release(KEY_A);
    EXPECT_EQ(listener.take(), "'a' released");

    driver.disableKeyboard();
    EXPECT_TRUE(awaitClosed(device));
}

TEST_F(DeviceOfTwoClasses, GoesOnPointingWhenTheKeyboardIsDisabled)
{
    driver.enableMouse();
    driver.enableKeyboard();
    settle();
    device.press(KEY_A);
    device.press(BTN_LEFT);
    ASSERT_EQ(listener.take(2), (Texts{"'a' pressed", "mouse left pressed"}));

    driver.disableKeyboard();
    EXPECT_EQ(listener.take(), "'a' released");
    device.release(KEY_A);
    device.release(BTN_LEFT);
    EXPECT_EQ(listener.take(), "mouse left released");

    driver.enableKeyboard();
    driver.disableMouse();
    settle();
    device.press(KEY_B);
    EXPECT_EQ(listener.take(), "'b' pressed");
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

/// The driver's thread must sleep on, whatever the test does now.
template <class Action>
void expectSleepDuring(Action action)
{
    ASSERT_TRUE(await(isDriverAsleep));
    const std::string before = countDriverSleeps();
    action();
    // Were there a descriptor that is ready, it would show in this time.
    await([&] { return countDriverSleeps() != before; }, std::chrono::milliseconds(300));
    EXPECT_EQ(countDriverSleeps(), before);
    EXPECT_TRUE(isDriverAsleep());
}

using InputSleep = InputTest;

TEST_F(InputSleep, LastsWhileNothingHappens)
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

    expectSleepDuring([] {});
}

TEST_F(InputSleep, IsNotDisturbedByADeviceOfAClassThatIsOff)
{
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    enableAll();
    driver.start();
    ASSERT_TRUE(awaitOpen(remote) && awaitOpen(pointer));
    driver.disableIr();
    ASSERT_TRUE(awaitClosed(remote));
    // This one went through the driver when it had closed the other.
    pointer.report({{EV_REL, REL_X, 1}});
    ASSERT_EQ(listener.take(), "mouse by 1,0,0");
    expectSleepDuring([&] { remote.press(KEY_OK); });

    EXPECT_TRUE(remote.hasUnread());
    EXPECT_TRUE(listener.events.isEmpty());
}

/// A child process that has a copy of each descriptor, as one has between fork() and exec().
class Fork
{
public:
    Fork() : child(fork())
    {
        if (child != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL); // also when the test crashes
        while (true)
            pause();
    }
    ~Fork()
    {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    Fork(const Fork&) = delete;
    Fork& operator=(const Fork&) = delete;

private:
    const pid_t child;
};

TEST_F(InputSleep, IsNotDisturbedByWhatAChildProcessHasACopyOf)
{
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    enableAll();
    driver.enableHotplug();
    driver.start();
    ASSERT_TRUE(awaitOpen(remote) && awaitOpen(pointer));
    const Fork child;
    driver.disableIr();
    driver.disableHotplug();
    ASSERT_TRUE(awaitClosed(remote));

    remote.press(KEY_OK);
    MockDevice unheardOf(machine, infrared());
    pointer.report({{EV_REL, REL_X, 1}});

    EXPECT_EQ(listener.take(), "mouse by 1,0,0");
    expectSleepDuring([] {});
}

} // namespace Corvane::Test
