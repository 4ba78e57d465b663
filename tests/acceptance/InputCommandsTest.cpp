#include "MockDevice.h"
#include "Programs.h"

#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace
{

/// corvanectl on a machine with mock devices, which it sees as well as this process.
class CorvanectlInput : public testing::Test
{
protected:
    /// Starts `input map`, which ends after as many lines, and waits until it listens.
    std::unique_ptr<ChildProcess> startMap(unsigned int lines, const Words& options = {})
    {
        Words command{CORVANECTL, "input", "map", "--count", std::to_string(lines)};
        command.insert(command.end(), options.begin(), options.end());
        auto process = std::make_unique<ChildProcess>(command);
        EXPECT_TRUE(await([&] { return process->getError().find("press keys") != std::string::npos; }))
            << process->getError();
        return process;
    }
    void write(const std::string& text, mode_t mode = S_IRUSR | S_IWUSR)
    {
        std::ofstream(path) << text;
        chmod(path.c_str(), mode);
    }

    MockMachine machine;
    const ScopedEnvironment preload{"LD_PRELOAD", UMOCKDEV_PRELOAD};
    TemporaryDirectory folder;
    const std::string path = folder.getPath() + "/input.json";
    const ScopedEnvironment map{"CORVANE_INPUT_MAP", path.c_str()};
    const ScopedEnvironment layout{"CORVANE_KEYBOARD_LAYOUT", nullptr};
};

} // namespace

TEST_F(CorvanectlInput, ListsTheDevicesAndTheirClasses)
{
    MockDevice pointer(machine, mouse());
    MockDevice keys(machine, onSeat(keyboard(), "seat3"));
    MockDevice both(machine, keyboardWithTrackBall());
    MockDevice remote(machine, infrared());

    const Outcome outcome = corvanectl({"input", "list"});

    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_THAT(outcome.output,
                MatchesRegex("DEVICE +NAME +BUS +VENDOR:PRODUCT +KEYS +POINTER +SESSION +RULE +STATE\n" +
                             pointer.getNode() + " +Mouse +usb +0001:0001 +none +mouse +0 +- +ok\n" + keys.getNode() +
                             " +Keyboard +usb +0001:0001 +keyboard +keyboard +3 +- +ok\n" + both.getNode() +
                             " +Keyboard with a track ball +usb +0001:0001 +keyboard +mouse +0 +- +ok\n" +
                             remote.getNode() + " +Receiver +host +0001:0001 +remote +remote +0 +- +ok\n"));
}

TEST_F(CorvanectlInput, ListsWhatTheMapMakesOfADevice)
{
    write(R"({"the remote":{"name":"Key*","class":"remote","session":2},"mice":{"ignore":true}})");
    MockDevice keys(machine, keyboard());
    MockDevice pointer(machine, mouse());

    EXPECT_EQ(
        corvanectl({"--json", "input", "list"}).output,
        "{\"device\":\"" + keys.getNode() +
            "\",\"name\":\"Keyboard\",\"bus\":\"usb\",\"vendor\":\"0001\",\"product\":\"0001\",\"keys\":\"remote\","
            "\"pointer\":\"remote\",\"session\":2,\"rule\":\"the remote\",\"state\":\"ok\"}\n{\"device\":\"" +
            pointer.getNode() +
            "\",\"name\":\"Mouse\",\"bus\":\"usb\",\"vendor\":\"0001\",\"product\":\"0001\",\"keys\":\"none\","
            "\"pointer\":\"none\",\"session\":0,\"rule\":\"mice\",\"state\":\"ignored\"}\n");
}

TEST_F(CorvanectlInput, TellsWhyADeviceCannotBeOpened)
{
    DeviceSpecification unknown = keyboard();
    unknown.properties.clear();
    MockDevice known(machine, keyboard());
    MockDevice other(machine, unknown);
    for (const MockDevice* const device : {&known, &other})
        ASSERT_EQ(std::remove(machine.locate(device->getNode()).c_str()), 0);

    const Outcome list = corvanectl({"input", "list"});
    const Outcome keys = corvanectl({"input", "map"});

    EXPECT_EQ(list.status, 0) << list.error;
    EXPECT_THAT(list.output, HasSubstr("cannot be opened: No such file or directory"));
    EXPECT_THAT(list.output, HasSubstr(" ? "));
    EXPECT_EQ(keys.status, 1);
    EXPECT_EQ(keys.error, "corvanectl: no input device can be opened; " + known.getNode() +
                              ": No such file or directory; " + other.getNode() + ": No such file or directory\n");
}

TEST_F(CorvanectlInput, SaysThatThereIsNoDevice)
{
    EXPECT_EQ(corvanectl({"input", "map"}).error, "corvanectl: there is no input device\n");
    EXPECT_EQ(corvanectl({"input"}).status, 2);
}

TEST_F(CorvanectlInput, ShowsWhatBecomesOfEachKey)
{
    write(R"({"remote":{"name":"Receiver","scans":{"1e01":"KEY_INFO"},"keys":{"KEY_PAUSE":"ignore"}}})");
    MockDevice keys(machine, keyboard());
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    const auto process = startMap(7);

    pointer.report({{EV_REL, REL_X, 1}});
    const auto awaitLine = [&](const std::string& line) { EXPECT_TRUE(process->awaitOutput(line + "\n")); };
    keys.press(KEY_LEFTSHIFT);
    awaitLine(keys.getNode() + "  KEY_LEFTSHIFT pressed  ->  KEY_LEFTSHIFT pressed");
    keys.press(KEY_A);
    awaitLine(keys.getNode() + "  KEY_A pressed  ->  'A' pressed");
    keys.release(KEY_A);
    awaitLine(keys.getNode() + "  KEY_A released  ->  'A' released");
    remote.report({{EV_MSC, MSC_SCAN, 0x1e01}, {EV_KEY, KEY_OK, 1}});
    awaitLine(remote.getNode() + "  scan 1e01, KEY_OK pressed  ->  KEY_INFO pressed");
    remote.report({{EV_KEY, KEY_OK, 2}});
    awaitLine(remote.getNode() + "  KEY_OK repeats  ->  KEY_INFO pressed");
    remote.press(KEY_PAUSE);
    awaitLine(remote.getNode() + "  KEY_PAUSE pressed  ->  nothing");
    pointer.press(BTN_LEFT);
    awaitLine(pointer.getNode() + "  BTN_LEFT pressed  ->  mouse");

    EXPECT_EQ(process->wait().status, 0) << process->getError();
}

TEST_F(CorvanectlInput, ShowsACharacterOfSeveralBytesAsOne)
{
    if (CORVANE_WITH_XKBCOMMON == 0)
        GTEST_SKIP() << "built without layouts";
    const ScopedEnvironment german("CORVANE_KEYBOARD_LAYOUT", "de,nodeadkeys");
    MockDevice keys(machine, keyboard());
    const auto process = startMap(1);

    keys.press(KEY_SEMICOLON);

    EXPECT_EQ(process->wait().status, 0) << process->getError();
    EXPECT_EQ(process->getOutput(), keys.getNode() + "  KEY_SEMICOLON pressed  ->  'ö' pressed\n");
}

TEST_F(CorvanectlInput, GivesScriptsTheKeyAndItsEvents)
{
    MockDevice remote(machine, infrared());
    const auto process = startMap(1, {"--json"});

    remote.report({{EV_MSC, MSC_SCAN, 0x1e01}, {EV_KEY, KEY_OK, 1}});

    EXPECT_EQ(process->wait().status, 0) << process->getError();
    EXPECT_EQ(process->getOutput(), "{\"device\":\"" + remote.getNode() +
                                        "\",\"scans\":[\"1e01\"],\"keys\":[{\"key\":\"KEY_OK\",\"value\":1}],"
                                        "\"events\":[{\"type\":\"KeyEvent\",\"keyCode\":352,\"pressed\":true}]}\n");
}

TEST_F(CorvanectlInput, EndsWhenItIsInterruptedOrTheLastDeviceIsGone)
{
    MockDevice keys(machine, keyboard());
    const auto interrupted = startMap(1);
    interrupted->sendSignal(SIGINT);
    EXPECT_EQ(interrupted->wait().status, 0);

    const auto process = startMap(1);
    keys.hangUp();
    EXPECT_EQ(process->wait().status, 0);
}
