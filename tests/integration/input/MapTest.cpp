#include "InputFixture.h"

#include <cstdio>
#include <fstream>
#include <support/TemporaryDirectory.h>
#include <sys/stat.h>

/// What people want devices to be, and keys to mean.
namespace Corvane::Test
{

namespace
{

/// A file in a folder of its own, which the driver is told of.
class MapFile
{
public:
    /// Puts the text into the place of the file at once, as editors do.
    void write(const std::string& text, mode_t mode = S_IRUSR | S_IWUSR)
    {
        const std::string draft = path + ".new";
        std::ofstream(draft) << text;
        chmod(draft.c_str(), mode);
        std::rename(draft.c_str(), path.c_str());
    }
    const std::string& getPath() const { return path; }

private:
    TemporaryDirectory folder;
    const std::string path = folder.getPath() + "/input.json";
    ScopedEnvironment environment{"CORVANE_INPUT_MAP", path.c_str()};
};

/// A driver on a mock machine, with a map that is written before it is started.
class InputMapping : public ::testing::Test
{
protected:
    /// Starts the driver with all classes enabled.
    void start(const std::string& map)
    {
        if (!map.empty())
            file.write(map);
        driver.emplace();
        driver->addInputEventListener(&listener, 0);
        driver->addInputEventListener(&kitchen, 2);
        driver->enableMouse();
        driver->enableKeyboard();
        driver->enableIr();
        driver->enableHotplug();
        driver->start();
    }
    /// Presses a key until it comes as `wanted`: a change of the file is noticed in time.
    bool awaitKey(MockDevice& device, unsigned int code, const std::string& wanted)
    {
        return await([&] {
            device.press(code);
            const bool isThere = listener.take() == wanted + " pressed";
            device.release(code);
            listener.take();
            return isThere;
        });
    }
    static bool awaitMessage(const CapturedOutput& error, const std::string& message)
    {
        return await([&] { return error.getMessages() == Texts{message}; });
    }
    std::string problem(const std::string& what) const { return "CORVANE_INPUT_MAP: " + file.getPath() + ": " + what; }

    MapFile file;
    MockMachine machine;
    InputRecorder listener;
    InputRecorder kitchen; ///< of session 2
    std::optional<MultiInputDriver> driver;
};

const char* const RED = R"({"box":{"keys":{"KEY_F1":"KEY_RED"}}})";

} // namespace

TEST_F(InputMapping, ChangesTheKeysOfTheDevicesThatItNamesAndNoOthers)
{
    MockDevice keys(machine, keyboard());
    MockDevice remote(machine, infrared());
    start(R"({"box":{"name":"Keyb*","bus":"usb","vendor":"0001","product":"1","keys":{"KEY_F1":"KEY_RED"}}})");

    keys.press(KEY_F1);
    EXPECT_EQ(listener.take(), "KEY_RED pressed");
    remote.press(KEY_F1);
    EXPECT_EQ(listener.take(), "KEY_F1 pressed");
}

TEST_F(InputMapping, KnowsAScanCode)
{
    MockDevice remote(machine, infrared());
    start(R"({"box":{"scans":{"1e01":"KEY_INFO","1e02":"KEY_HELP"}}})");

    remote.report({{EV_MSC, MSC_SCAN, 0x1e01}, {EV_KEY, KEY_OK, 1}});
    remote.release(KEY_OK);
    EXPECT_EQ(listener.take(2), (Texts{"KEY_INFO pressed", "KEY_INFO released"}));
    remote.report({{EV_MSC, MSC_SCAN, 0x1e02}});
    EXPECT_EQ(listener.take(2), (Texts{"KEY_HELP pressed", "KEY_HELP released"}));
}

TEST_F(InputMapping, MakesAKeyboardARemoteControlOfAnotherSession)
{
    MockDevice keys(machine, keyboard());
    start(R"({"box":{"class":"remote","session":2}})");
    driver->disableKeyboard();

    keys.press(KEY_A);

    EXPECT_EQ(kitchen.take(), "KEY_A pressed");
    driver->disableIr();
    EXPECT_EQ(kitchen.take(), "KEY_A released");
    EXPECT_TRUE(await([&] { return !keys.isOpen(); }));
    EXPECT_TRUE(listener.events.isEmpty());
}

TEST_F(InputMapping, MakesAKeyOfAMousesThumb)
{
    MockDevice pointer(machine, mouse());
    start(R"({"mouse":{"keys":{"BTN_SIDE":"KEY_BACK"}}})");

    pointer.press(BTN_SIDE);
    EXPECT_EQ(listener.take(), "KEY_BACK pressed");
    driver->disableMouse();
    EXPECT_EQ(listener.take(), "KEY_BACK released");
}

TEST_F(InputMapping, LeavesADeviceAloneThatIsIgnored)
{
    DeviceSpecification unknown = keyboard();
    unknown.properties.clear();
    MockDevice ignored(machine, unknown);
    MockDevice remote(machine, infrared());
    start(R"({"bad":{"name":"Keyboard","ignore":true}})");

    remote.press(KEY_OK);

    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_FALSE(ignored.isOpen());
}

TEST_F(InputMapping, IsReadAgainWhenTheFileChanges)
{
    MockDevice keys(machine, keyboard());
    start("");
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_F1"));

    file.write(RED);
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_RED"));
    std::ofstream(file.getPath()) << R"({"box":{"keys":{"KEY_F1":"KEY_BLUE"}}})";
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_BLUE"));
    ASSERT_EQ(std::remove(file.getPath().c_str()), 0);
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_F1"));
}

TEST_F(InputMapping, ReleasesWhatIsHeldOnADeviceThatItChangesAndLeavesTheOthers)
{
    MockDevice keys(machine, keyboard());
    MockDevice remote(machine, infrared());
    start(R"({"box":{"name":"Keyboard","keys":{"KEY_F1":"KEY_RED"}}})");
    remote.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    keys.press(KEY_F1);
    ASSERT_EQ(listener.take(), "KEY_RED pressed");

    file.write(R"({"box":{"name":"Keyboard","session":2}})");

    EXPECT_EQ(listener.take(), "KEY_RED released");
    keys.press(KEY_F2);
    EXPECT_EQ(kitchen.take(), "KEY_F2 pressed");
    remote.release(KEY_OK);
    EXPECT_EQ(listener.take(), "KEY_OK released");
}

TEST_F(InputMapping, CountsForADeviceThatIsPluggedInLater)
{
    start(RED);

    MockDevice keys(machine, keyboard());
    keys.press(KEY_F1);

    EXPECT_EQ(listener.take(), "KEY_RED pressed");
}

TEST_F(InputMapping, StaysAsItWasWhenTheFileIsBad)
{
    MockDevice keys(machine, keyboard());
    start(RED);
    ASSERT_TRUE(awaitKey(keys, KEY_F1, "KEY_RED"));
    {
        CapturedOutput error;
        file.write(R"({"box":{"keys":{"KEY_F1":"KEY_RAD"}}})");
        EXPECT_TRUE(awaitMessage(error, problem(R"(box.keys.KEY_F1: "KEY_RAD" is no key, and not "ignore")")));
    }
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_RED"));

    CapturedOutput error;
    file.write(RED, S_IRUSR | S_IWUSR | S_IWGRP);
    EXPECT_TRUE(awaitMessage(error, problem("others than its owner may write it")));
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_RED"));
}

TEST_F(InputMapping, IsNotTakenFromAFileThatOthersMayWriteUntilTheyMayNot)
{
    MockDevice keys(machine, keyboard());
    file.write(RED, S_IRUSR | S_IWUSR | S_IWOTH);
    CapturedOutput error;
    start("");

    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_F1"));
    EXPECT_EQ(error.getMessages(), Texts{problem("others than its owner may write it")});
    ASSERT_EQ(chmod(file.getPath().c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_RED"));
}

TEST_F(InputMapping, IsNotTakenFromAPipe)
{
    ASSERT_EQ(mkfifo(file.getPath().c_str(), S_IRUSR | S_IWUSR), 0);
    MockDevice keys(machine, keyboard());
    CapturedOutput error;
    start("");

    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_F1"));
    EXPECT_EQ(error.getMessages(), Texts{problem("it is no file")});
}

TEST_F(InputMapping, WhoseFolderIsMissingIsOneLine)
{
    const ScopedEnvironment environment("CORVANE_INPUT_MAP", "/nowhere/input.json");
    MockDevice keys(machine, keyboard());
    CapturedOutput error;
    start("");

    EXPECT_TRUE(awaitKey(keys, KEY_F1, "KEY_F1"));
    EXPECT_EQ(error.getMessages(),
              Texts{"CORVANE_INPUT_MAP: /nowhere/input.json: its changes are not noticed: the system does not tell"});
}

TEST_F(InputMapping, TurnsADeviceIntoAKeyboardWithTheLayoutOfKeyboards)
{
    if (CORVANE_WITH_XKBCOMMON == 0)
        GTEST_SKIP() << "built without layouts";
    const ScopedEnvironment layout("CORVANE_KEYBOARD_LAYOUT", "de,nodeadkeys");
    MockDevice remote(machine, infrared());
    MockDevice keys(machine, keyboard());
    start(R"({"remote":{"name":"Receiver","class":"keyboard"}})");

    for (MockDevice* const device : {&remote, &keys}) {
        device->press(KEY_SEMICOLON);
        EXPECT_EQ(listener.take(2), (Texts{"'\xc3' pressed", "'\xb6' pressed"}));
        device->release(KEY_SEMICOLON);
        EXPECT_EQ(listener.take(2), (Texts{"'\xc3' released", "'\xb6' released"}));
    }
}

} // namespace Corvane::Test
