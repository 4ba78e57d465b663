#include "Programs.h"

#include <corvane/common/RPCServer.h>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

using Corvanectl = WithHelloWindow;

TEST_F(Corvanectl, ListsEveryServerThatLivesWithItsState)
{
    HelloWindow other("other");

    EXPECT_EQ(corvanectl({"list"}).output, "UID    SERVER    STATE\n"
                                           "demo   APPdemo   RUNNING\n"
                                           "other  APPother  RUNNING\n");
    EXPECT_EQ(corvanectl({"list", "--json"}).output,
              "{\"uid\":\"demo\",\"server\":\"APPdemo\",\"state\":\"RUNNING\"}\n"
              "{\"uid\":\"other\",\"server\":\"APPother\",\"state\":\"RUNNING\"}\n");
}

TEST_F(Corvanectl, ListsAServerThatDoesNotTellItsStateWithTheReason)
{
    hello.stop();

    EXPECT_EQ(corvanectl({"--timeout", "0.2", "list"}).output, "UID   SERVER   STATE\ndemo  APPdemo  - (Timed out)\n");
    EXPECT_EQ(corvanectl({"--timeout", "0.2", "--json", "list"}).output,
              "{\"uid\":\"demo\",\"server\":\"APPdemo\",\"state\":null,\"problem\":\"Timed out\"}\n");
}

TEST_F(Corvanectl, ListsAServerOfNoApplicationWithoutAState)
{
    Corvane::RPCServer server("Clock");
    server.init();

    EXPECT_EQ(corvanectl({"list"}).output, "UID    SERVER   STATE\n"
                                           "demo   APPdemo  RUNNING\n"
                                           "Clock  Clock    -\n");
    EXPECT_THAT(corvanectl({"list", "--json"}).output,
                EndsWith("{\"uid\":\"Clock\",\"server\":\"Clock\",\"state\":null}\n"));
}

TEST_F(Corvanectl, ListsTheSocketThatADeadServerLeftBehindAsDead)
{
    HelloWindow other("a\x1b[1m");
    other.process.sendSignal(SIGKILL);
    ASSERT_EQ(other.process.wait().signal, SIGKILL);
    std::ofstream(runtime.directory.getPath() + "/file.sock").close(); // no socket at all

    EXPECT_EQ(corvanectl({"list"}).output, "UID       SERVER       STATE\n"
                                           "demo      APPdemo      RUNNING\n"
                                           "a\\x1b[1m  APPa\\x1b[1m  - (dead)\n");
    EXPECT_THAT(corvanectl({"list", "--json"}).output,
                EndsWith("{\"uid\":\"a\\u001b[1m\",\"server\":\"APPa\\u001b[1m\",\"state\":null,\"dead\":true}\n"));
    EXPECT_EQ(corvanectl({"state", "a"}).status, 3) << "a dead one is not called by the beginning of its uid";
}

TEST_F(Corvanectl, DescribesMethodsTheirTypesAndNotificationsInWords)
{
    const Outcome outcome = corvanectl({"describe", "demo"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, AllOf(StartsWith("Server APPdemo\nMethods:\n"), HasSubstr("\nNotifications:\n")));
    EXPECT_THAT(outcome.output, HasSubstr("\n  IApplication::getState() -> string\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\n  IWindow::setOpacity(opacity: integer 0..4294967295)\n"));
    EXPECT_THAT(outcome.output,
                HasSubstr("\n  IWindow::setLocation(location: {x: integer, y: integer, width: integer, height: "
                          "integer})\n"));
    EXPECT_THAT(outcome.output, HasSubstr("{type: \"MouseEvent\", buttons?: object, movement?: object, position?: "
                                          "object}) -> boolean\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\n  IWindow::onFocusChange(uid: string, oldIsFocused: boolean, "
                                          "newIsFocused: boolean)\n      The input focus"));
}

TEST_F(Corvanectl, DescribesAsOneLineOfOpenRpcForScripts)
{
    const Outcome outcome = corvanectl({"describe", "demo", "--json"});

    EXPECT_THAT(outcome.output, AllOf(StartsWith("{\"openrpc\":\"1.2.6\","), EndsWith("}\n")));
    EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1);
}

TEST_F(Corvanectl, FindsAServerByItsWholeNameToo)
{
    EXPECT_EQ(corvanectl({"state", "APPdemo"}).output, "RUNNING\n");
}

TEST_F(Corvanectl, PrefersTheUidWhereAServerHasThatNameToo)
{
    HelloWindow other("APPdemo");
    corvanectl({"opacity", "APPdemo", "7"});

    EXPECT_EQ(corvanectl({"opacity", "APPAPPdemo"}).output, "7\n");
    EXPECT_EQ(corvanectl({"opacity", "demo"}).output, "255\n");
}

TEST_F(Corvanectl, TakesTheBeginningOfAUidWhereOnlyOneBeginsLikeThat)
{
    EXPECT_EQ(corvanectl({"state", "d"}).output, "RUNNING\n");
    HelloWindow other("dem");

    EXPECT_EQ(corvanectl({"stats", "demo"}).status, 0);
    EXPECT_EQ(corvanectl({"opacity", "dem", "7"}).status, 0) << "a whole uid goes first";
    EXPECT_EQ(corvanectl({"opacity", "demo"}).output, "255\n");
    const Outcome outcome = corvanectl({"stats", "d"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.error, "corvanectl: 'd' may be any of dem, demo\n");
}

TEST_F(Corvanectl, ReachesAUidOfAnyBytes)
{
    HelloWindow strange("../\x1b[1m x%");

    EXPECT_EQ(corvanectl({"state", "../\x1b[1m x%"}).output, "RUNNING\n");
    EXPECT_THAT(corvanectl({"list"}).output, HasSubstr("\n../\\x1b[1m x%  APP../\\x1b[1m x%  RUNNING\n"));
}

TEST_F(Corvanectl, TakesTheNameOfACommandForAUid)
{
    HelloWindow named("list");

    EXPECT_EQ(corvanectl({"state", "list"}).output, "RUNNING\n");
}

TEST_F(Corvanectl, ShowsWhatTheApplicationUses)
{
    EXPECT_THAT(corvanectl({"stats", "demo"}).output,
                MatchesRegex("process    " HELLO_WINDOW "\nhost       Unknown\nprocessor  [0-9]+ % since it was asked "
                             "last\nmemory     [1-9][0-9]+ kB at most\n"));
    EXPECT_THAT(corvanectl({"stats", "demo", "--json"}).output,
                MatchesRegex("\\{\"processName\":\"" HELLO_WINDOW "\",.*\"maxResidentSet\":[1-9][0-9]+,.*\\}\n"));
}

TEST_F(Corvanectl, SuspendsAndActivates)
{
    const Outcome suspended = corvanectl({"suspend", "demo"});
    EXPECT_EQ(suspended.status, 0);
    EXPECT_EQ(suspended.output, "");
    EXPECT_EQ(corvanectl({"state", "demo"}).output, "SUSPENDING\n");

    EXPECT_EQ(corvanectl({"activate", "demo", "--json"}).output, "null\n");
    EXPECT_EQ(corvanectl({"state", "demo"}).output, "RESUMING\n");
}

TEST_F(Corvanectl, TerminatesAnApplicationWhichThenEndsWithSuccess)
{
    EXPECT_EQ(corvanectl({"terminate", "demo"}).status, 0);
    EXPECT_EQ(hello.process.wait().status, 0);
    EXPECT_EQ(corvanectl({"state", "demo"}).status, 3);
}

TEST_F(Corvanectl, PressesAndReleasesAKey)
{
    EXPECT_EQ(corvanectl({"key", "demo", "28"}).output, "key 28 pressed: used\nkey 28 released: used\n");
    EXPECT_EQ(hello.process.getOutput(), "{\"type\":\"KeyEvent\",\"keyCode\":28,\"pressed\":true}\n"
                                         "{\"type\":\"KeyEvent\",\"keyCode\":28,\"pressed\":false}\n");
}

TEST_F(Corvanectl, PressesOrReleasesAKeyAlone)
{
    EXPECT_EQ(corvanectl({"key", "demo", "1", "--press", "--json"}).output, "{\"pressed\":true}\n");
    EXPECT_EQ(corvanectl({"key", "demo", "1", "--release", "--json"}).output, "{\"released\":true}\n");
    EXPECT_EQ(hello.process.getOutput(), "{\"type\":\"KeyEvent\",\"keyCode\":1,\"pressed\":true}\n"
                                         "{\"type\":\"KeyEvent\",\"keyCode\":1,\"pressed\":false}\n");
}

TEST_F(Corvanectl, CallsAnyMethodWithParametersAsWords)
{
    const Outcome outcome = corvanectl({"call", "demo", "IWindow::handleEvent",
                                        "event={\"type\":\"AsciiEvent\",\n \"asciiCode\":65,\"pressed\":true}"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "true\n");
    EXPECT_EQ(hello.process.getOutput(), "{\"type\":\"AsciiEvent\",\"asciiCode\":65,\"pressed\":true}\n");
}

TEST_F(Corvanectl, CallsWithAMouseEvent)
{
    corvanectl(
        {"call", "demo", "IWindow::handleEvent", "event={\"type\":\"MouseEvent\",\"position\":{\"x\":320,\"y\":200}}"});

    EXPECT_THAT(hello.process.getOutput(),
                AllOf(StartsWith("{\"type\":\"MouseEvent\","), EndsWith("\"position\":{\"x\":320,\"y\":200}}\n")));
}

TEST_F(Corvanectl, TakesAWordThatIsNoJsonForAString)
{
    EXPECT_EQ(corvanectl({"call", "demo", "IApplication::setState", "requestedState=half way"}).status, 0);
    EXPECT_EQ(corvanectl({"call", "demo", "IApplication::getState"}).output, "half way\n");
    EXPECT_EQ(corvanectl({"call", "demo", "IApplication::getState", "--json"}).output, "\"half way\"\n");

    // A quoted number is JSON, and so is a string.
    corvanectl({"call", "demo", "IApplication::setState", "requestedState=\"7\""});
    EXPECT_EQ(corvanectl({"state", "demo"}).output, "7\n");
}

TEST_F(Corvanectl, CallsWithAllParametersAsOneObject)
{
    EXPECT_EQ(corvanectl({"call", "demo", "IWindow::setOpacity", "--params", "{ \"opacity\" : 300 }"}).status, 0);
    EXPECT_EQ(corvanectl({"opacity", "demo"}).output, "44\n");
}

TEST_F(Corvanectl, PrintsAnObjectAsATable)
{
    EXPECT_EQ(corvanectl({"call", "demo", "IWindow::getLocation"}).output,
              "x       0\ny       0\nwidth   1280\nheight  720\n");
    EXPECT_EQ(corvanectl({"call", "demo", "IWindow::getLocation", "--json"}).output,
              "{\"x\":0,\"y\":0,\"width\":1280,\"height\":720}\n");
}

TEST_F(Corvanectl, ReportsAFailedCallWithTheMessageOfTheServer)
{
    const auto expectFailure = [](const Words& words, const std::string& message) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, "corvanectl: " + message + "\n");
    };

    expectFailure({"call", "demo", "IWindow::setOpacity", "opacity=abc"},
                  "opacity: expected an unsigned 32-bit number, found string");
    expectFailure({"call", "demo", "IWindow::nothing"}, "unknown method");
    expectFailure({"call", "demo", "Nothing::nothing"}, "unknown interface");
}

TEST_F(Corvanectl, GivesUpAfterTheTimeout)
{
    hello.stop();

    const Outcome outcome = corvanectl({"state", "demo", "--timeout", "0.2"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: Timed out\n");
}

TEST_F(Corvanectl, LetsNoApplicationDriveTheTerminal)
{
    corvanectl({"call", "demo", "IApplication::setState", "requestedState=\"a\\u001b[2J\""});

    EXPECT_EQ(corvanectl({"state", "demo"}).output, "a\\x1b[2J\n");
    EXPECT_EQ(corvanectl({"state", "demo", "--json"}).output, "\"a\\u001b[2J\"\n");
}

TEST_F(Corvanectl, FailsWhenItsOutputCannotBeWritten)
{
    ChildProcess process({"/bin/sh", "-c", "exec " CORVANECTL " state demo >/dev/full"});

    EXPECT_EQ(process.wait().status, 1);
    EXPECT_EQ(process.getError(), "corvanectl: cannot write the output\n");
}
