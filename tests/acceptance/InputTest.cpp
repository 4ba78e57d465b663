#include "Programs.h"

#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::HasSubstr;

namespace
{

using CorvanectlKey = WithHelloWindow;

std::string keyEvent(int code, bool pressed)
{
    return "{\"type\":\"KeyEvent\",\"keyCode\":" + std::to_string(code) +
           ",\"pressed\":" + (pressed ? "true" : "false") + "}\n";
}

std::string asciiEvent(char character, bool pressed)
{
    return "{\"type\":\"AsciiEvent\",\"asciiCode\":" + std::to_string(character) +
           ",\"pressed\":" + (pressed ? "true" : "false") + "}\n";
}

} // namespace

TEST_F(CorvanectlKey, IsNamedAsInTheLinuxHeaders)
{
    const Outcome outcome = corvanectl({"key", "demo", "KEY_OK"});

    EXPECT_EQ(outcome.output, "key KEY_OK pressed: used\nkey KEY_OK released: used\n") << outcome.error;
    EXPECT_EQ(hello.process.getOutput(), keyEvent(352, true) + keyEvent(352, false));
}

TEST_F(CorvanectlKey, MayHaveASecondName)
{
    EXPECT_EQ(corvanectl({"key", "demo", "KEY_ZOOM", "--press"}).output, "key KEY_ZOOM pressed: used\n");
    EXPECT_EQ(hello.process.getOutput(), keyEvent(372, true));
}

TEST_F(CorvanectlKey, ThatIsUnknownIsAnsweredWithAnExample)
{
    const Outcome outcome = corvanectl({"key", "demo", "KEY_NONSENSE"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.error, HasSubstr("'KEY_NONSENSE' is no key: give a name of Linux's headers such as KEY_OK"));
}

TEST_F(CorvanectlKey, IsOneOfManyWhenATextIsTyped)
{
    const Outcome outcome = corvanectl({"key", "demo", "--type", "Hi ~\n\t"});

    EXPECT_EQ(outcome.output, "text typed: used\n") << outcome.error;
    std::string expected;
    for (const char character : {'H', 'i', ' ', '~'})
        expected += asciiEvent(character, true) + asciiEvent(character, false);
    expected += keyEvent(28, true) + keyEvent(28, false) + keyEvent(15, true) + keyEvent(15, false);
    EXPECT_EQ(hello.process.getOutput(), expected);
}

TEST_F(CorvanectlKey, IsTypedByAScriptWhichGetsWhetherItWasUsed)
{
    EXPECT_EQ(corvanectl({"--json", "key", "demo", "--type", "a"}).output, "{\"typed\":true}\n");
}

TEST(InputViewer, PrintsEveryEventThatItGets)
{
    TemporaryRuntime runtime;
    ChildProcess viewer({INPUT_VIEWER, "--application-type=viewer", "--authorization-token=viewer"},
                        leavingSignalsToTheProgram());
    ASSERT_TRUE(await([] { return corvanectl({"state", "viewer"}).output == "RUNNING\n"; })) << viewer.getError();

    corvanectl({"key", "viewer", "KEY_OK"});
    corvanectl({"key", "viewer", "4711", "--press"});
    corvanectl({"key", "viewer", "--type", "a"});
    corvanectl({"call", "viewer", "IWindow::handleEvent",
                "event={\"type\":\"MouseEvent\",\"buttons\":{\"isLeftPressed\":true,\"hasLeftChanged\":true,"
                "\"hasMiddleChanged\":true,\"hasRightChanged\":true},\"position\":{\"x\":10,\"y\":20},"
                "\"movement\":{\"deltaX\":1,\"deltaY\":2,\"deltaZ\":-3}}"});
    corvanectl({"terminate", "viewer"});

    EXPECT_EQ(viewer.wait().status, 0) << viewer.getError();
    EXPECT_EQ(viewer.getOutput(), "key 352 KEY_OK pressed\nkey 352 KEY_OK released\nkey 4711  pressed\n"
                                  "character 'a' pressed\ncharacter 'a' released\n"
                                  "mouse, left pressed, middle released, right released, at 10,20, moved by 1,2, "
                                  "wheel -3\n");
    EXPECT_THAT(viewer.getError(), HasSubstr("set CORVANE_WINDOWEXEC_STANDALONE"));
}

TEST(InputViewer, SaysNothingOfTheDevicesWhenTheyAreEnabled)
{
    TemporaryRuntime runtime;
    ChildProcess viewer({INPUT_VIEWER, "--application-type=viewer", "--authorization-token=viewer"}, [] {
        auto environment = leavingSignalsToTheProgram();
        environment["CORVANE_WINDOWEXEC_STANDALONE"] = "";
        return environment;
    }());
    ASSERT_TRUE(await([] { return corvanectl({"state", "viewer"}).output == "RUNNING\n"; })) << viewer.getError();

    corvanectl({"terminate", "viewer"});

    EXPECT_EQ(viewer.wait().status, 0);
    EXPECT_EQ(viewer.getError().find("input-viewer:"), std::string::npos);
}
