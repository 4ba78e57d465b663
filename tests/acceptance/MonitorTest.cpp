#include "Programs.h"

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>
#include <sstream>

using namespace Corvane::Test;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace
{

/// The monitor's lines but the keep-alives, which come at times of their own.
std::vector<std::string> linesOf(const ChildProcess& monitor)
{
    std::vector<std::string> lines;
    std::istringstream output(monitor.getOutput());
    for (std::string line; std::getline(output, line);)
        if (line.find("onKeepAlive") == line.npos)
            lines.push_back(line);
    return lines;
}

/// A monitor that watches already.
struct Monitor : ChildProcess {
    explicit Monitor(const Words& words) : ChildProcess(complete(words))
    {
        EXPECT_TRUE(awaitOutput("\"connected\":true")) << getError();
    }

    static Words complete(Words words)
    {
        words.insert(words.begin(), {CORVANECTL, "monitor", "--json"});
        return words;
    }
};

std::string writeConnection(bool connected, const std::string& server = "APPdemo")
{
    return "{\"server\":\"" + server + "\",\"connected\":" + (connected ? "true" : "false") + "}";
}

std::string writeStateChange(const std::string& oldState, const std::string& newState)
{
    return "{\"server\":\"APPdemo\",\"notification\":\"IApplication::onStateChange\",\"params\":{\"uid\":\"demo\","
           "\"oldState\":\"" +
           oldState + "\",\"newState\":\"" + newState + "\"}}";
}

using CorvanectlMonitor = WithHelloWindow;

} // namespace

TEST_F(CorvanectlMonitor, PrintsEachNotificationOnALineForScripts)
{
    Monitor monitor({"demo"});
    corvanectl({"opacity", "demo", "128"});
    corvanectl({"location", "demo", "1,2,3,4"});
    corvanectl({"suspend", "demo"});
    ASSERT_TRUE(monitor.awaitOutput("SUSPENDING"));

    const std::string begin = "{\"server\":\"APPdemo\",\"notification\":";
    EXPECT_THAT(linesOf(monitor),
                ElementsAre(writeConnection(true),
                            begin + "\"IWindow::onOpacityChange\",\"params\":{\"uid\":\"demo\",\"oldOpacity\":255,"
                                    "\"newOpacity\":128}}",
                            begin +
                                "\"IWindow::onLocationChange\",\"params\":{\"uid\":\"demo\",\"oldLocation\":{\"x\":0,"
                                "\"y\":0,\"width\":1280,\"height\":720},\"newLocation\":{\"x\":1,\"y\":2,\"width\":3,"
                                "\"height\":4}}}",
                            writeStateChange("RUNNING", "SUSPENDING")));
}

TEST_F(CorvanectlMonitor, PrintsTimeUidNameAndFieldsForPeople)
{
    ChildProcess monitor({CORVANECTL, "monitor", "demo"});
    ASSERT_TRUE(monitor.awaitOutput("demo  is watched\n"));
    corvanectl({"visibility", "demo", "off"});
    ASSERT_TRUE(monitor.awaitOutput("newVisibility"));
    ASSERT_TRUE(monitor.awaitOutput("=false\n"));

    const std::string line = linesOf(monitor).back();

    EXPECT_THAT(line.substr(0, 12), testing::MatchesRegex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9][0-9][0-9]"));
    EXPECT_EQ(line.substr(12), "  demo  IWindow::onVisibilityChange  oldVisibility=true  newVisibility=false");
}

TEST_F(CorvanectlMonitor, EndsAfterTheCountThatWasAskedFor)
{
    Monitor monitor({"--count", "2", "demo"});
    for (const char* opacity : {"1", "2", "3"})
        corvanectl({"opacity", "demo", opacity});

    EXPECT_EQ(monitor.wait().status, 0);
    std::istringstream output(monitor.getOutput());
    int lines = 0;
    for (std::string line; std::getline(output, line);)
        ++lines;
    EXPECT_EQ(lines, 3) << monitor.getOutput(); // that it watches, and two notifications
}

TEST_F(CorvanectlMonitor, EndsWithSuccessWhenItIsInterruptedOrTerminated)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Monitor monitor({"demo"});
        monitor.sendSignal(signal);
        EXPECT_EQ(monitor.wait().status, 0) << signal;
    }
}

TEST_F(CorvanectlMonitor, WatchesSeveralServersAtOnce)
{
    HelloWindow other("other");
    HelloWindow third("third");
    for (const Words& words : {Words{"demo", "other"}, Words{}}) {
        Monitor monitor(words);
        ASSERT_TRUE(monitor.awaitOutput(writeConnection(true, "APPdemo")));
        ASSERT_TRUE(monitor.awaitOutput(writeConnection(true, "APPother")));
        corvanectl({"opacity", "demo", "1"});
        corvanectl({"opacity", "other", "2"});
        EXPECT_TRUE(monitor.awaitOutput("{\"server\":\"APPdemo\",\"notification\":\"IWindow::onOpacityChange\""));
        EXPECT_TRUE(monitor.awaitOutput("{\"server\":\"APPother\",\"notification\":\"IWindow::onOpacityChange\""));
        EXPECT_EQ(monitor.getOutput().find("APPthird") != std::string::npos, words.empty());
    }
}

TEST_F(CorvanectlMonitor, SaysWhenAServerGoesAndComesBack)
{
    Monitor monitor({"demo"});
    corvanectl({"terminate", "demo"});
    ASSERT_EQ(hello.process.wait().status, 0);
    ASSERT_TRUE(monitor.awaitOutput(writeConnection(false)));

    HelloWindow again;
    // What the application tells while it starts may come behind this line already.
    ASSERT_TRUE(await([&] {
        const std::vector<std::string> lines = linesOf(monitor);
        return std::count(lines.begin(), lines.end(), writeConnection(true)) == 2;
    }));
    corvanectl({"opacity", "demo", "9"});
    ASSERT_TRUE(monitor.awaitOutput("\"newOpacity\":9"));

    const std::vector<std::string> lines = linesOf(monitor);
    EXPECT_EQ(lines[1], writeStateChange("RUNNING", "TERMINATED"));
    EXPECT_EQ(lines[2], writeConnection(false));
}

TEST_F(CorvanectlMonitor, ShowsTheLastWordsOfAnApplicationThatDiesOfASignal)
{
    Monitor monitor({"demo"});
    corvanectl({"opacity", "demo", "128"});
    hello.process.sendSignal(SIGSEGV);
    ASSERT_TRUE(monitor.awaitOutput(writeConnection(false)));

    EXPECT_EQ(hello.process.wait().signal, SIGSEGV);
    const std::vector<std::string> lines = linesOf(monitor);
    ASSERT_EQ(lines.size(), 4U) << monitor.getOutput();
    EXPECT_THAT(lines[1], HasSubstr("onOpacityChange"));
    EXPECT_EQ(lines[2], writeStateChange("RUNNING", "ABORTED"));
    EXPECT_EQ(lines[3], writeConnection(false));
}

TEST_F(CorvanectlMonitor, EndsWhenNobodyReadsItsOutputAnyMore)
{
    ChildProcess monitor({"/bin/sh", "-c", "trap '' PIPE; " CORVANECTL " monitor demo >/dev/full; echo ended with $?"});

    EXPECT_EQ(monitor.wait().status, 0);
    EXPECT_EQ(monitor.getOutput(), "ended with 1\n");
}
