#include "KernelDevices.h"

#include <corvane/input/MultiInputDriver.h>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/cec.h>
#include <linux/input-event-codes.h>
#include <string>
#include <support/Await.h>
#include <support/InputRecorder.h>
#include <support/TemporaryDirectory.h>
#include <vector>

/// The input driver on devices of the kernel, from the driver of the device to the listener.
namespace Corvane::Test
{

namespace
{

/// An input driver with all classes and hotplug, and a listener of session 0.
class KernelDevicesTest : public ::testing::Test
{
protected:
    /// Starts the driver, which takes its settings from the environment.
    void start()
    {
        driver.emplace();
        driver->addInputEventListener(&recorder, 0);
        driver->enableMouse();
        driver->enableKeyboard();
        driver->enableIr();
        driver->enableHotplug();
        driver->start();
    }

    std::string take() { return recorder.take(); }
    Texts take(std::size_t count) { return recorder.take(count); }
    /// Taps a key until the driver has found the device and gives it as `wanted`. What is tapped before is lost, and a
    /// second is far more than what is heard takes.
    bool awaitTap(UinputDevice& device, unsigned int code, const std::string& wanted)
    {
        const bool isThere = await([&] {
            device.press(code);
            device.release(code);
            std::string text;
            while (recorder.events.take(text, std::chrono::seconds(1)))
                if (text == wanted + " pressed")
                    return true;
            return false;
        });
        return isThere && take() == wanted + " released";
    }

    std::optional<MultiInputDriver> driver;
    InputRecorder recorder;
};

using Uinput = KernelDevicesTest;
using Remote = KernelDevicesTest;
using Television = KernelDevicesTest;
using Map = KernelDevicesTest;

std::set<unsigned int> keysOfAKeyboard()
{
    std::set<unsigned int> keys;
    for (unsigned int code = KEY_ESC; code <= KEY_COMPOSE; ++code)
        keys.insert(code);
    return keys;
}

UinputDevice makeKeyboard()
{
    return {"Keyboard", keysOfAKeyboard(), {}};
}

UinputDevice makeMouse()
{
    return {"Mouse", {BTN_LEFT, BTN_RIGHT, BTN_MIDDLE, BTN_SIDE}, {REL_X, REL_Y, REL_WHEEL}};
}

UinputDevice makeKeyboardWithTouchPad()
{
    std::set<unsigned int> keys = keysOfAKeyboard();
    keys.merge(std::set<unsigned int>{BTN_LEFT, BTN_RIGHT, BTN_MIDDLE, BTN_SIDE});
    return {"Keyboard with a touch pad", keys, {REL_X, REL_Y, REL_WHEEL}};
}

constexpr std::uint32_t SCAN_CODE = 0x1e01;
constexpr std::uint32_t OTHER_SCAN_CODE = 0x1e02;

} // namespace

TEST_F(Uinput, MouseMovesTurnsItsWheelAndClicks)
{
    start();
    UinputDevice mouse = makeMouse();
    ASSERT_TRUE(awaitTap(mouse, BTN_SIDE, "BTN_SIDE"));

    mouse.report({{EV_REL, REL_X, 5}, {EV_REL, REL_Y, -3}});
    mouse.report({{EV_REL, REL_WHEEL, -1}});
    mouse.press(BTN_LEFT);
    mouse.release(BTN_LEFT);

    EXPECT_EQ(take(4), (Texts{"mouse by 5,-3,0", "mouse by 0,0,1", "mouse left pressed", "mouse left released"}));
}

TEST_F(Uinput, KeyboardTypes)
{
    start();
    UinputDevice keyboard = makeKeyboard();
    ASSERT_TRUE(awaitTap(keyboard, KEY_F1, "KEY_F1"));

    for (const unsigned int code : {KEY_LEFTSHIFT, KEY_A})
        keyboard.press(code);
    for (const unsigned int code : {KEY_A, KEY_LEFTSHIFT})
        keyboard.release(code);

    EXPECT_EQ(take(4), (Texts{"KEY_LEFTSHIFT pressed", "'A' pressed", "'A' released", "KEY_LEFTSHIFT released"}));
}

TEST_F(Uinput, KeyboardWithATouchPadOnOneNodeIsBoth)
{
    start();
    UinputDevice device = makeKeyboardWithTouchPad();
    ASSERT_TRUE(awaitTap(device, KEY_F1, "KEY_F1"));

    device.press(KEY_A);
    device.release(KEY_A);
    device.report({{EV_REL, REL_X, 1}});
    device.press(BTN_LEFT);
    EXPECT_EQ(take(4), (Texts{"'a' pressed", "'a' released", "mouse by 1,0,0", "mouse left pressed"}));

    driver->disableMouse();
    EXPECT_EQ(take(), "mouse left released");
    device.report({{EV_REL, REL_X, 1}});
    device.press(KEY_B);
    EXPECT_EQ(take(), "'b' pressed");
    driver->disableKeyboard();
    EXPECT_EQ(take(), "'b' released");
}

TEST_F(Uinput, DeviceThatIsUnpluggedReleasesWhatIsHeldAndOneThatComesBackWorks)
{
    start();
    for (int i = 0; i < 20; ++i) {
        std::optional<UinputDevice> keyboard(makeKeyboard());
        ASSERT_TRUE(awaitTap(*keyboard, KEY_F1, "KEY_F1")) << i;
        keyboard->press(KEY_A);
        ASSERT_EQ(take(), "'a' pressed");
        keyboard.reset();
        ASSERT_EQ(take(), "'a' released");
    }
}

TEST_F(Uinput, DeviceThatWasThereBeforeIsFound)
{
    UinputDevice keyboard = makeKeyboard();
    start();

    EXPECT_TRUE(awaitTap(keyboard, KEY_F2, "KEY_F2"));
}

TEST_F(Map, ChangesKeysAndIsReadAgainWhenItsFileChanges)
{
    const TemporaryDirectory folder;
    const std::string path = folder.getPath() + "/input.json";
    const ScopedEnvironment environment("CORVANE_INPUT_MAP", path.c_str());
    std::ofstream(path) << R"({"board":{"name":"Key*","bus":"usb","vendor":"1234","product":"5678",
                               "scans":{"70004":"KEY_BLUE"},"keys":{"KEY_F1":"KEY_RED"}}})";
    start();
    UinputDevice keyboard = makeKeyboard();
    ASSERT_TRUE(awaitTap(keyboard, KEY_F1, "KEY_RED"));
    keyboard.report({{EV_MSC, MSC_SCAN, 0x70004}, {EV_KEY, KEY_A, 1}});
    EXPECT_EQ(take(), "KEY_BLUE pressed");
    keyboard.release(KEY_A);
    EXPECT_EQ(take(), "KEY_BLUE released");

    std::ofstream(path) << R"({"board":{"keys":{"KEY_F1":"KEY_GREEN"}}})";
    EXPECT_TRUE(awaitTap(keyboard, KEY_F1, "KEY_GREEN"));
    ASSERT_EQ(std::remove(path.c_str()), 0);
    EXPECT_TRUE(awaitTap(keyboard, KEY_F1, "KEY_F1"));
}

TEST_F(Uinput, KeyboardTypesInItsLayout)
{
    if (CORVANE_WITH_XKBCOMMON == 0)
        GTEST_SKIP() << "built without layouts";
    const ScopedEnvironment environment("CORVANE_KEYBOARD_LAYOUT", "de");
    start();
    UinputDevice keyboard = makeKeyboard();
    ASSERT_TRUE(awaitTap(keyboard, KEY_F1, "KEY_F1"));

    keyboard.press(KEY_SEMICOLON);
    EXPECT_EQ(take(2), (Texts{"'\xc3' pressed", "'\xb6' pressed"}));
    keyboard.release(KEY_SEMICOLON);
    EXPECT_EQ(take(2), (Texts{"'\xc3' released", "'\xb6' released"}));
    // A dead key and its letter.
    for (const unsigned int code : {KEY_EQUAL, KEY_E}) {
        keyboard.press(code);
        keyboard.release(code);
    }
    EXPECT_EQ(take(4), (Texts{"'\xc3' pressed", "'\xa9' pressed", "'\xc3' released", "'\xa9' released"}));
}

TEST_F(Remote, PressesAndReleasesAKey)
{
    const std::optional<LoopbackRemote> remote = LoopbackRemote::find();
    if (!remote)
        GTEST_SKIP() << "the kernel has no rc-loopback";
    remote->setKey(SCAN_CODE, KEY_OK);
    start();
    ASSERT_TRUE(await([&] {
        remote->send(SCAN_CODE);
        std::string text;
        return recorder.events.take(text, std::chrono::milliseconds(500)) && text == "KEY_OK pressed";
    }));
    EXPECT_EQ(take(), "KEY_OK released");
}

TEST_F(Remote, HasAKeyOfTheMapForAScanCodeThatTheKernelDoesNotKnow)
{
    const std::optional<LoopbackRemote> remote = LoopbackRemote::find();
    if (!remote)
        GTEST_SKIP() << "the kernel has no rc-loopback";
    const TemporaryDirectory folder;
    const std::string path = folder.getPath() + "/input.json";
    const ScopedEnvironment environment("CORVANE_INPUT_MAP", path.c_str());
    std::ofstream(path) << R"({"remote":{"scans":{"1e02":"KEY_INFO"}}})";
    start();

    ASSERT_TRUE(await([&] {
        remote->send(OTHER_SCAN_CODE);
        std::string text;
        return recorder.events.take(text, std::chrono::milliseconds(500)) && text == "KEY_INFO pressed";
    }));
    EXPECT_EQ(take(), "KEY_INFO released");
}

TEST_F(Television, PressesAndReleasesAKeyOverTheCable)
{
    std::optional<CecCable> cable = CecCable::find();
    if (!cable)
        GTEST_SKIP() << "the kernel has no vivid with CEC";
    start();
    driver->disableMouse();
    driver->disableKeyboard();

    ASSERT_TRUE(await([&] {
        cable->press(CEC_OP_UI_CMD_SELECT);
        std::string text;
        return recorder.events.take(text, std::chrono::milliseconds(500)) && text == "KEY_OK pressed";
    }));
    cable->release();
    // Pressed again and again until the driver had found it, the key may have repeated.
    std::string text;
    ASSERT_TRUE(await([&] { return recorder.events.take(text) && text == "KEY_OK released"; }));
}

} // namespace Corvane::Test
