#include "InputFixture.h"

#include <optional>

/// Devices that come and go.
namespace Corvane::Test
{

/// A running driver that hears of new devices.
class Hotplug : public InputTest
{
protected:
    Hotplug()
    {
        enableAll();
        driver.enableHotplug();
        driver.start();
        first.emplace(machine, mouse());
        EXPECT_TRUE(awaitOpen(*first));
    }

    std::optional<MockDevice> first; ///< plugged in while the driver runs
};

TEST_F(Hotplug, OpensWhatIsPluggedIn)
{
    MockDevice device(machine, infrared());

    device.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
}

TEST_F(Hotplug, OpensADeviceOnceAlthoughItIsReportedTwice)
{
    first->announce("change", {});
    driver.disableHotplug();
    driver.enableHotplug();
    first->report({{EV_REL, REL_X, 1}});
    first->report({{EV_REL, REL_X, 2}});

    EXPECT_EQ(listener.take(2), (Texts{"mouse by 1,0,0", "mouse by 2,0,0"}));
}

TEST_F(Hotplug, ReleasesWhatIsHeldOnADeviceThatIsUnplugged)
{
    first->press(BTN_LEFT);
    MockDevice device(machine, infrared());
    ASSERT_EQ(listener.take(), "mouse left pressed");
    device.press(KEY_OK);
    device.press(KEY_UP);
    ASSERT_EQ(listener.take(2), (Texts{"KEY_OK pressed", "KEY_UP pressed"}));

    device.unplug();
    EXPECT_EQ(listener.take(2), (Texts{"KEY_UP released", "KEY_OK released"}));
    first->unplug();
    EXPECT_EQ(listener.take(), "mouse left released");
}

TEST_F(Hotplug, ClosesADeviceThatTheSystemSaysIsGone)
{
    MockDevice device(machine, infrared());
    device.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");

    device.announce("remove", {});

    EXPECT_EQ(listener.take(), "KEY_OK released");
    EXPECT_TRUE(awaitClosed(device));
}

TEST_F(Hotplug, ClosesADeviceThatHangsUpOrFailsThoughNobodyTells)
{
    MockDevice hanging(machine, infrared());
    MockDevice failing(machine, infrared());
    hanging.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    failing.press(KEY_UP);
    ASSERT_EQ(listener.take(), "KEY_UP pressed");

    hanging.hangUp();
    EXPECT_EQ(listener.take(), "KEY_OK released");
    failing.fail();
    EXPECT_EQ(listener.take(), "KEY_UP released");
    EXPECT_TRUE(awaitClosed(hanging) && awaitClosed(failing));
    first->report({{EV_REL, REL_X, 1}});
    EXPECT_EQ(listener.take(), "mouse by 1,0,0");
}

TEST_F(Hotplug, TakesTheSessionFromADaemonThatIsSlow)
{
    InputRecorder other;
    driver.addInputEventListener(&other, 4);
    DeviceSpecification raw = infrared();
    raw.properties.clear();
    MockDevice device(machine, raw);
    device.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");

    device.announce("add", {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}, {"ID_SEAT", "seat4"}});
    ASSERT_EQ(listener.take(), "KEY_OK released");
    device.press(KEY_UP);

    EXPECT_EQ(other.take(), "KEY_UP pressed");
    EXPECT_TRUE(listener.events.isEmpty());
    driver.removeInputEventListener(&other);
}

TEST_F(Hotplug, IsDeafWhenItIsDisabledAndCatchesUpWhenItIsEnabledAgain)
{
    driver.disableHotplug();
    driver.disableMouse();
    ASSERT_TRUE(awaitClosed(*first));
    MockDevice device(machine, infrared());
    driver.enableMouse();
    ASSERT_TRUE(awaitOpen(*first));
    EXPECT_FALSE(device.isOpen());

    driver.enableHotplug();

    EXPECT_TRUE(awaitOpen(device));
}

TEST_F(Hotplug, IsAboutNothingButNodesOfEvents)
{
    CapturedOutput error;
    // A second node of the same mouse, for programs of another time. There is no such file: opening it would be a line.
    machine.add("P: /devices/usb/1-99/input/input99/mouse0\nE: SUBSYSTEM=input\nE: DEVNAME=/dev/input/mouse0\n"
                "E: ID_INPUT=1\nE: ID_INPUT_MOUSE=1\n");

    MockDevice device(machine, infrared());
    device.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(error.getText(), "");
}

} // namespace Corvane::Test
