#include "InputFixture.h"

#include <algorithm>
#include <functional>
#include <support/TemporaryDirectory.h>

/// What the devices that are there at the start give.
namespace Corvane::Test
{

using Devices = InputTest;

TEST_F(Devices, MouseGivesOneEventAFrame)
{
    MockDevice device(machine, mouse());
    driver.enableMouse();
    driver.start();

    device.report({{EV_KEY, BTN_LEFT, 1}, {EV_REL, REL_X, 3}, {EV_REL, REL_Y, -2}});
    device.report({{EV_KEY, BTN_LEFT, 0}});

    EXPECT_EQ(listener.take(2), (Texts{"mouse left pressed by 3,-2,0", "mouse left released"}));
}

TEST_F(Devices, WheelGivesItsStepsOnce)
{
    MockDevice device(machine, mouse());
    driver.enableMouse();
    driver.start();

    device.report({{EV_REL, REL_WHEEL, 1}, {EV_REL, REL_WHEEL_HI_RES, 120}});
    device.report({{EV_REL, REL_WHEEL, -1}, {EV_REL, REL_WHEEL_HI_RES, -120}});

    EXPECT_EQ(listener.take(2), (Texts{"mouse by 0,0,-1", "mouse by 0,0,1"}));
}

TEST_F(Devices, AbsolutePointerGivesAPositionOnTheScreen)
{
    MockDevice device(machine, tablet());
    driver.enableMouse();
    driver.start();

    device.report({{EV_ABS, ABS_X, 32767}, {EV_ABS, ABS_Y, 16384}});
    device.report({{EV_ABS, ABS_X, 0}, {EV_REL, REL_WHEEL, -1}});
    device.report({{EV_KEY, BTN_RIGHT, 1}});

    EXPECT_EQ(listener.take(3), (Texts{"mouse at 1279,360", "mouse at 0,360 by 0,0,1", "mouse right pressed"}));
}

TEST_F(Devices, KeyboardGivesCharactersWhereKeysHaveThem)
{
    MockDevice device(machine, keyboard());
    driver.enableKeyboard();
    driver.start();

    device.press(KEY_LEFTSHIFT);
    device.press(KEY_H);
    device.release(KEY_H);
    device.release(KEY_LEFTSHIFT);
    device.press(KEY_I);
    device.press(KEY_ENTER);

    EXPECT_EQ(listener.take(6), (Texts{"KEY_LEFTSHIFT pressed", "'H' pressed", "'H' released", "KEY_LEFTSHIFT released",
                                       "'i' pressed", "KEY_ENTER pressed"}));
}

TEST_F(Devices, KeyboardBeginsWithTheCapsLockThatItsLightShows)
{
    DeviceSpecification locked = keyboard();
    locked.ledsOn = {LED_CAPSL};
    MockDevice device(machine, locked);
    driver.enableKeyboard();
    driver.start();

    device.press(KEY_A);

    EXPECT_EQ(listener.take(), "'A' pressed");
}

TEST_F(Devices, InfraredRemoteGivesKeysAlthoughItSaysThatItIsAKeyboardAndAMouse)
{
    MockDevice device(machine, infrared());
    driver.enableIr();
    driver.start();

    device.report({{EV_MSC, MSC_SCAN, 0x40}, {EV_KEY, KEY_OK, 1}});
    device.report({{EV_KEY, KEY_OK, 2}});
    device.release(KEY_OK);
    device.press(KEY_1);

    EXPECT_EQ(listener.take(4), (Texts{"KEY_OK pressed", "KEY_OK pressed", "KEY_OK released", "KEY_1 pressed"}));
}

TEST_F(Devices, ArePassedOnInTheOrderInWhichEachReports)
{
    MockDevice device(machine, infrared());
    driver.enableIr();
    driver.start();

    Texts expected;
    for (unsigned int code = KEY_ESC; code < KEY_PAUSE; ++code) {
        device.press(code);
        device.release(code);
        const std::string name = findKeyName(code).empty() ? std::to_string(code) : findKeyName(code);
        expected.push_back(name + " pressed");
        expected.push_back(name + " released");
    }

    EXPECT_EQ(listener.take(expected.size()), expected);
}

TEST_F(Devices, KeyThatIsHeldWhenItsDeviceIsOpenedGivesNoReleaseAlone)
{
    MockDevice device(machine, infrared());
    device.press(KEY_OK);
    driver.enableIr();
    driver.start();
    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    driver.disableIr();
    ASSERT_EQ(listener.take(), "KEY_OK released");
    ASSERT_TRUE(awaitClosed(device));
    driver.enableIr();
    ASSERT_TRUE(awaitOpen(device));

    device.release(KEY_OK);
    device.press(KEY_UP);

    EXPECT_EQ(listener.take(), "KEY_UP pressed");
}

TEST_F(Devices, ShiftAndCapsLockThatAreHeldWhenTheirDeviceIsOpenedCountAsHeld)
{
    DeviceSpecification locked = keyboardWithTrackBall();
    locked.ledsOn = {LED_CAPSL};
    locked.keysDown = {KEY_RIGHTSHIFT, KEY_CAPSLOCK};
    MockDevice device(machine, locked);
    driver.enableKeyboard();
    driver.start();
    device.report({{EV_KEY, KEY_CAPSLOCK, 2}});
    ASSERT_EQ(listener.take(), "KEY_CAPSLOCK pressed");
    device.press(KEY_A);
    device.press(KEY_1);
    EXPECT_EQ(listener.take(2), (Texts{"'a' pressed", "'!' pressed"}));

    // Also when the device was open before, for its pointer.
    driver.enableMouse();
    driver.disableKeyboard();
    EXPECT_EQ(listener.take(3), (Texts{"'!' released", "'a' released", "KEY_CAPSLOCK released"}));
    device.release(KEY_RIGHTSHIFT);
    device.release(KEY_CAPSLOCK);
    device.report({{EV_REL, REL_X, 1}});
    ASSERT_EQ(listener.take(), "mouse by 1,0,0");
    driver.enableKeyboard();
    driver.disableMouse();
    ASSERT_TRUE(await([&] {
        device.press(KEY_B);
        return !listener.events.isEmpty();
    }));
    EXPECT_EQ(listener.take(), "'B' pressed");
}

TEST_F(Devices, KnobOfTheFrontPanelChangesTheVolume)
{
    MockDevice device(machine, knob());
    driver.enableIr();
    driver.start();

    device.report({{EV_REL, REL_DIAL, 1}});
    device.report({{EV_REL, REL_DIAL, -1}});

    EXPECT_EQ(listener.take(4), (Texts{"KEY_VOLUMEUP pressed", "KEY_VOLUMEUP released", "KEY_VOLUMEDOWN pressed",
                                       "KEY_VOLUMEDOWN released"}));
}

TEST_F(Devices, RepeatTheirKeysAsTheEnvironmentSays)
{
    const ScopedEnvironment environment("CORVANE_KEY_REPEAT", "400,40");
    MultiInputDriver configured;
    MockDevice keys(machine, keyboard());
    MockDevice remote(machine, infrared());
    CapturedOutput error;
    configured.enableKeyboard();
    configured.enableIr();
    configured.start();

    ASSERT_TRUE(awaitOpen(keys) && awaitOpen(remote));
    EXPECT_TRUE(await([&] { return keys.getRepeat() == Repeat{400, 40}; }));
    // The kernel has no say in this one's, and refuses to hear of it.
    EXPECT_EQ(error.getText(), "");
}

TEST_F(Devices, RepeatTheirKeysAsTheKernelLetsThemOtherwise)
{
    MockDevice keys(machine, keyboard());
    driver.enableKeyboard();
    driver.start();
    keys.press(KEY_A);
    ASSERT_EQ(listener.take(), "'a' pressed");

    EXPECT_EQ(keys.getRepeat(), (Repeat{250, 33}));
}

/// A device that udev's rules call a few keys and something else.
struct OtherDevice {
    const char* property;
    unsigned int key;

    friend std::ostream& operator<<(std::ostream& stream, const OtherDevice& one) { return stream << one.property; }
};

class OtherDevices : public InputTest, public ::testing::WithParamInterface<OtherDevice>
{
};

TEST_P(OtherDevices, GiveTheirKeysAsARemoteControlDoesAndNothingElse)
{
    DeviceSpecification other = tablet();
    other.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}, {GetParam().property, "1"}};
    other.codes[EV_KEY].merge(std::set<unsigned int>{BTN_TOUCH, BTN_SOUTH, BTN_DPAD_UP, GetParam().key});
    MockDevice device(machine, other);
    enableAll();
    driver.start();

    device.report({{EV_KEY, BTN_TOUCH, 1}, {EV_ABS, ABS_X, 16384}, {EV_REL, REL_WHEEL, 1}});
    device.press(BTN_SOUTH);
    device.press(BTN_DPAD_UP);
    device.press(BTN_LEFT);
    device.press(GetParam().key);

    EXPECT_EQ(listener.take(), findKeyName(GetParam().key) + " pressed");
    driver.disableIr();
    EXPECT_EQ(listener.take(), findKeyName(GetParam().key) + " released");
    EXPECT_TRUE(awaitClosed(device));
    EXPECT_TRUE(listener.events.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    , OtherDevices,
    ::testing::Values(OtherDevice{"ID_INPUT_JOYSTICK", KEY_BACK}, OtherDevice{"ID_INPUT_TOUCHSCREEN", KEY_HOMEPAGE},
                      OtherDevice{"ID_INPUT_TOUCHPAD", KEY_MUTE}, OtherDevice{"ID_INPUT_TABLET", KEY_PROG1},
                      OtherDevice{"ID_INPUT_TABLET_PAD", KEY_PROG2}, OtherDevice{"ID_INPUT_ACCELEROMETER", KEY_POWER}),
    [](const auto& info) { return std::string(info.param.property); });

/// A class of devices: how it is switched.
struct Switch {
    void (InputDriver::*enable)();
    void (InputDriver::*disable)();
    bool operator==(const Switch&) const = default;
};

const Switch MOUSE{&InputDriver::enableMouse, &InputDriver::disableMouse};
const Switch KEYBOARD{&InputDriver::enableKeyboard, &InputDriver::disableKeyboard};
const Switch REMOTE{&InputDriver::enableIr, &InputDriver::disableIr};

/// A device, and the classes of its parts, each of which opens it; none for a device that no class opens.
struct Classification {
    const char* name;
    DeviceSpecification specification;
    std::vector<Switch> classes;

    bool isOf(const Switch& which) const { return std::ranges::count(classes, which) != 0; }

    friend std::ostream& operator<<(std::ostream& stream, const Classification& one) { return stream << one.name; }
};

DeviceSpecification with(DeviceSpecification specification, const std::function<void(DeviceSpecification&)>& change)
{
    change(specification);
    return specification;
}

DeviceSpecification withoutProperties(DeviceSpecification specification)
{
    specification.properties.clear();
    return specification;
}

/// A device of which no udev daemon has said anything: what it can report, and what the kernel says of it.
DeviceSpecification unnamed(const std::set<unsigned int>& keys, const std::set<unsigned int>& axes,
                            const std::set<unsigned int>& traits = {})
{
    DeviceSpecification device = withoutProperties(mouse());
    device.codes = {{EV_KEY, keys}, {EV_ABS, axes}};
    device.traits = traits;
    for (const unsigned int axis : axes)
        device.axes[axis] = {.value = 0, .minimum = 0, .maximum = 4095, .fuzz = 0, .flat = 0, .resolution = 0};
    return device;
}

const Classification CLASSIFICATIONS[] = {
    {"Mouse", mouse(), {MOUSE}},
    {"Tablet", tablet(), {MOUSE}},
    {"Keyboard", keyboard(), {KEYBOARD}},
    {"InfraredReceiver", infrared(), {REMOTE}},
    {"TelevisionOverTheCable", with(keyboard(), [](auto& device) { device.bus = BUS_CEC; }), {REMOTE}},
    {"FrontPanel", with(keyboard(), [](auto& device) { device.properties.erase("ID_INPUT_KEYBOARD"); }), {REMOTE}},
    {"MouseWithFewKeys", with(mouse(), [](auto& device) { device.properties["ID_INPUT_KEY"] = "1"; }), {MOUSE, REMOTE}},
    {"KeyboardWithTrackBall", keyboardWithTrackBall(), {MOUSE, KEYBOARD}},
    {"KeyboardWithTrackBallWithoutUdev", withoutProperties(keyboardWithTrackBall()), {MOUSE, KEYBOARD}},
    {"MouseWithFewKeysWithoutUdev",
     with(withoutProperties(mouse()), [](auto& device) { device.codes[EV_KEY].insert(KEY_VOLUMEUP); }),
     {MOUSE, REMOTE}},
    {"MouseWithoutUdev", withoutProperties(mouse()), {MOUSE}},
    {"TabletWithoutUdev", withoutProperties(tablet()), {MOUSE}},
    {"KeyboardWithoutUdev", withoutProperties(keyboard()), {KEYBOARD}},
    {"ReceiverWithoutUdev", withoutProperties(infrared()), {REMOTE}},
    {"FewKeysWithoutUdev",
     with(withoutProperties(keyboard()), [](auto& device) { device.codes[EV_KEY].erase(KEY_W); }),
     {REMOTE}},
    {"NearlyAKeyboardWithoutUdev",
     with(withoutProperties(keyboard()), [](auto& device) { device.codes[EV_KEY].erase(KEY_S); }),
     {REMOTE}},
    {"NoKeysWithoutUdev", with(withoutProperties(mouse()), [](auto& device) { device.codes.erase(EV_KEY); }), {}},
    {"TouchScreenWithoutUdev", unnamed({BTN_TOUCH}, {ABS_X, ABS_Y}, {INPUT_PROP_DIRECT}), {}},
    {"TouchScreenWithHomeWithoutUdev",
     unnamed({BTN_TOUCH, KEY_HOMEPAGE}, {ABS_X, ABS_Y, ABS_MT_POSITION_X, ABS_MT_POSITION_Y}, {INPUT_PROP_DIRECT}),
     {REMOTE}},
    {"TouchScreenThatSaysNoMoreWithoutUdev", unnamed({BTN_LEFT}, {ABS_X, ABS_Y}, {INPUT_PROP_DIRECT}), {}},
    {"TouchPadWithoutUdev",
     unnamed({BTN_LEFT, BTN_TOUCH, BTN_TOOL_FINGER}, {ABS_X, ABS_Y}, {INPUT_PROP_POINTER, INPUT_PROP_BUTTONPAD}),
     {}},
    {"PenWithoutUdev", unnamed({BTN_LEFT, BTN_TOUCH, BTN_STYLUS, BTN_TOOL_PEN}, {ABS_X, ABS_Y}), {}},
    {"JoystickWithoutUdev", unnamed({BTN_TRIGGER, BTN_THUMB}, {ABS_X, ABS_Y, ABS_THROTTLE}), {}},
    {"GamepadWithoutUdev", unnamed({BTN_SOUTH, BTN_EAST, KEY_BACK}, {ABS_X, ABS_Y, ABS_RX, ABS_HAT0X}), {REMOTE}},
    {"TouchPadOfAGamepadWithoutUdev", unnamed({BTN_LEFT, BTN_DPAD_UP}, {ABS_X, ABS_Y}), {}},
    {"WheelOfACarWithoutUdev", unnamed({BTN_TRIGGER_HAPPY1}, {ABS_X}), {}},
    {"AccelerometerWithoutUdev", unnamed({KEY_POWER}, {ABS_X, ABS_Y, ABS_Z}, {INPUT_PROP_ACCELEROMETER}), {REMOTE}},
    {"AbsoluteMouseThatMovesAPointerWithoutUdev",
     unnamed({BTN_LEFT, BTN_RIGHT}, {ABS_X, ABS_Y}, {INPUT_PROP_POINTER}),
     {MOUSE}},
    {"KeyboardWithTouchPadWithoutUdev",
     with(withoutProperties(keyboard()),
          [](auto& device) {
              device.codes[EV_KEY].merge(std::set<unsigned int>{BTN_LEFT, BTN_TOOL_FINGER});
              device.codes[EV_ABS] = {ABS_X, ABS_Y};
              device.axes = tablet().axes;
          }),
     {KEYBOARD}},
    {"KeyboardWithEveryButtonWithoutUdev",
     with(withoutProperties(keyboardWithTrackBall()),
          [](auto& device) {
              device.codes[EV_KEY].merge(std::set<unsigned int>{BTN_TRIGGER, BTN_SOUTH});
          }),
     {MOUSE, KEYBOARD}},
    {"Knob", knob(), {REMOTE}},
    {"KnobWithoutUdev", withoutProperties(knob()), {REMOTE}},
    {"MouseWithAKnob", with(mouse(), [](auto& device) { device.codes[EV_REL].insert(REL_DIAL); }), {MOUSE}},
    {"FrontPanelWithoutNamesWithoutUdev", unnamed({BTN_0, BTN_1}, {}), {REMOTE}},
    {"KeyboardThatSaysItIsAJoystick",
     with(keyboard(), [](auto& device) { device.properties["ID_INPUT_JOYSTICK"] = "1"; }),
     {KEYBOARD}},
    {"Joystick",
     with(mouse(),
          [](auto& device) {
              device.properties = {{"ID_INPUT", "1"}, {"ID_INPUT_JOYSTICK", "1"}};
          }),
     {}},
};

class DeviceClassification : public InputTest, public ::testing::WithParamInterface<Classification>
{
};

TEST_P(DeviceClassification, DecidesWhichSwitchesOpenTheDevice)
{
    MockDevice device(machine, GetParam().specification);
    for (const Switch& one : {MOUSE, KEYBOARD, REMOTE})
        if (!GetParam().isOf(one))
            (driver.*one.enable)();
    driver.injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(KEY_OK, true), 0);
    driver.start();
    // It opens the devices before it delivers.
    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_FALSE(device.isOpen());

    for (const Switch& one : GetParam().classes) {
        (driver.*one.enable)();
        EXPECT_TRUE(awaitOpen(device));
        (driver.*one.disable)();
        EXPECT_TRUE(awaitClosed(device));
    }
}

INSTANTIATE_TEST_SUITE_P(, DeviceClassification, ::testing::ValuesIn(CLASSIFICATIONS),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace Corvane::Test
