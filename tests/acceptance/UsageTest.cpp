#include "Programs.h"

#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

const Words COMMANDS = {"list",  "describe", "call",     "monitor", "state",    "focus",   "visibility", "opacity",
                        "stats", "z-order",  "location", "key",     "activate", "suspend", "terminate"};

using CorvanectlUsage = WithHelloWindow;

struct CorvanectlAlone : testing::Test {
    TemporaryRuntime runtime;
};

} // namespace

TEST_F(CorvanectlUsage, RefusesWhatItDoesNotUnderstandBeforeAnythingIsSent)
{
    const std::vector<Words> wrong = {
        {},
        {"nonsense"},
        {"--nonsense"},
        {"list", "extra"},
        {"list", "--timeout", "0"},
        {"list", "--timeout", "soon"},
        {"describe"},
        {"state", ""},
        {"state", "demo", "ALMOST"},
        {"opacity", "demo", "1", "2"},
        {"opacity", "demo", "256"},
        {"opacity", "demo", "-1"},
        {"opacity", "demo", "1.5"},
        {"opacity", "demo", " 1"},
        {"opacity", "demo", ""},
        {"z-order", "demo", "4294967296"},
        {"visibility", "demo", "maybe"},
        {"focus", "demo", "1"},
        {"location", "demo", "1,2"},
        {"location", "demo", "1,2,3,4,5"},
        {"location", "demo", "1,2,-3,4"},
        {"location", "demo", "2147483648,0,1,1"},
        {"location", "demo", "1,2,3,x"},
        {"key", "demo"},
        {"key", "demo", "ENTER"},
        {"key", "demo", "28", "--press", "--release"},
        {"key", "demo", "key_ok"},
        {"key", "demo", "KEY_NONSENSE"},
        {"key", "demo", "KEY_MAX"},
        {"key", "demo", "4294967296"},
        {"key", "demo", ""},
        {"key", "demo", "KEY_OK", "--type", "text"},
        {"key", "demo", "--type", "text", "--press"},
        {"key", "demo", "--type", "text", "--release"},
        {"key", "demo", "--type"},
        {"key", "demo", "--type", ""},
        {"key", "demo", "--type", "caf\xC3\xA9"},
        {"key", "demo", "--type", "a\x1B"},
        {"call", "demo"},
        {"call", "demo", "IWindow::setOpacity", "opacity"},
        {"call", "demo", "IWindow::setOpacity", "=1"},
        {"call", "demo", "IWindow::setOpacity", "opacity=1", "opacity=2"},
        {"call", "demo", "IWindow::setOpacity", "--params", ""},
        {"call", "demo", "IWindow::setOpacity", "--params", "[1]"},
        {"call", "demo", "IWindow::setOpacity", "--params", "{\"opacity\":1"},
        {"call", "demo", "IWindow::setOpacity", "opacity=1", "--params", "{}"},
        {"monitor", "demo", "--count", "0"},
    };
    ChildProcess monitor({CORVANECTL, "monitor", "demo", "--json"});
    ASSERT_TRUE(monitor.awaitOutput("\"connected\":true"));

    for (const Words& words : wrong) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(words) << outcome.error;
        EXPECT_EQ(outcome.output, "") << testing::PrintToString(words);
        EXPECT_THAT(outcome.error, StartsWith("corvanectl: ")) << testing::PrintToString(words);
    }

    // Keep-alives aside, the next thing that the application tells is the last call of this test.
    corvanectl({"z-order", "demo", "1"});
    ASSERT_TRUE(monitor.awaitOutput("onZOrderChange"));
    EXPECT_EQ(monitor.getOutput().find("onOpacityChange"), std::string::npos);
    EXPECT_EQ(monitor.getOutput().find("onStateChange"), std::string::npos);
    EXPECT_EQ(monitor.getOutput().find("onLocationChange"), std::string::npos);
    EXPECT_EQ(hello.process.getOutput(), "");
}

TEST_F(CorvanectlAlone, SaysWhichServerIsNotThereAndWhereItLooked)
{
    for (const std::string& command : COMMANDS) {
        if (command == "list")
            continue;
        Words words{command, "nobody"};
        if (command == "call" || command == "key")
            words.push_back(command == "call" ? "IApplication::getState" : "28");
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 3) << command;
        EXPECT_EQ(outcome.output, "") << command;
        EXPECT_THAT(outcome.error, StartsWith("corvanectl: no server APPnobody ")) << command;
        EXPECT_THAT(outcome.error, HasSubstr("(is the application running? CORVANE_RUNTIME_DIR=" +
                                             runtime.directory.getPath() + ")\n"))
            << command;
    }
}

TEST_F(CorvanectlAlone, HasNothingToMonitorWhereNobodyLives)
{
    EXPECT_EQ(corvanectl({"monitor"}).status, 3);
}

TEST_F(CorvanectlAlone, ListsNobodyWhereNobodyLives)
{
    const Outcome outcome = corvanectl({"list"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "UID  SERVER  STATE\n");
    EXPECT_EQ(corvanectl({"list", "--json"}).output, "");
}

TEST_F(CorvanectlAlone, ExplainsEachCommandWithAnExample)
{
    const Outcome help = corvanectl({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const std::string& command : COMMANDS) {
        EXPECT_THAT(help.output, HasSubstr("\n  " + command + " "));
        const Outcome outcome = corvanectl({command, "--help"});
        EXPECT_EQ(outcome.status, 0) << command;
        EXPECT_THAT(outcome.output, HasSubstr("Example:\n  corvanectl " + command)) << command;
    }
}

TEST_F(CorvanectlAlone, TellsItsVersion)
{
    EXPECT_EQ(corvanectl({"--version"}).output, "corvanectl " PROJECT_VERSION "\n");
}
