#include "DrivenProcess.h"

#include <support/MissingManager.h>

namespace Corvane::Test
{

namespace
{

using nlohmann::json;
using DrivenWindow = DrivenProcess;

std::string windowChange(const std::string& name, const std::string& values)
{
    return "IWindow::" + name + " {\"uid\":\"token-0123456789abcdef\"," + values + "}";
}

TEST_F(DrivenWindow, TellsAndChangesItsStateAndSaysSo)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IApplication::getState"), "RUNNING");
    EXPECT_EQ(call("IApplication::suspend"), nullptr);
    EXPECT_EQ(announcements.next(), changeOf("RUNNING", "SUSPENDING"));
    EXPECT_EQ(call("IApplication::setState", R"({"requestedState":"SUSPENDED"})"), nullptr);
    EXPECT_EQ(announcements.next(), changeOf("SUSPENDING", "SUSPENDED"));
    EXPECT_EQ(call("IApplication::activate"), nullptr);
    EXPECT_EQ(announcements.next(), changeOf("SUSPENDED", "RESUMING"));
    EXPECT_EQ(call("IApplication::getState", R"({"ignored":1})"), "RESUMING");
}

TEST_F(DrivenWindow, RefusesAStateSilently)
{
    EXPECT_EQ(call("IApplication::activate"), nullptr);
    EXPECT_EQ(call("IApplication::setState", R"({"requestedState":"LOADING"})"), nullptr);
    EXPECT_EQ(call("IApplication::getState"), "RUNNING");
}

TEST_F(DrivenWindow, TellsItsStatistics)
{
    const json statistics = call("IApplication::getRuntimeStatistics");
    EXPECT_EQ(statistics["processName"], DRIVEN_WINDOW);
    EXPECT_EQ(statistics["hostName"], "Unknown");
    EXPECT_GT(statistics["maxResidentSet"], 1000);
}

TEST_F(DrivenWindow, ChangesItsVisibilityAndSaysSo)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::getVisibility"), true);
    EXPECT_EQ(call("IWindow::setVisibility", R"({"visibility":false})"), nullptr);
    EXPECT_EQ(announcements.next(),
              windowChange("onVisibilityChange", R"("oldVisibility":true,"newVisibility":false)"));
    EXPECT_EQ(call("IWindow::getVisibility"), false);
}

TEST_F(DrivenWindow, ChangesItsOpacityModulo256AndSaysSo)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::getOpacity"), 200);
    EXPECT_EQ(call("IWindow::setOpacity", R"({"opacity":300})"), nullptr);
    EXPECT_EQ(announcements.next(), windowChange("onOpacityChange", R"("oldOpacity":200,"newOpacity":44)"));
    EXPECT_EQ(call("IWindow::getOpacity"), 44);
}

TEST_F(DrivenWindow, ChangesItsZOrderAndSaysSo)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::getZOrder"), 3);
    EXPECT_EQ(call("IWindow::setZOrder", R"({"zorder":4294967295})"), nullptr);
    EXPECT_EQ(announcements.next(), windowChange("onZOrderChange", R"("oldZOrder":3,"newZOrder":4294967295)"));
    EXPECT_EQ(call("IWindow::getZOrder"), 4294967295U);
}

TEST_F(DrivenWindow, ChangesItsLocationAndSaysSo)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::getLocation"), json::parse(R"({"x":1,"y":2,"width":30,"height":40})"));
    EXPECT_EQ(call("IWindow::setLocation", R"({"location":{"x":-5,"y":6,"width":7,"height":8}})"), nullptr);
    EXPECT_EQ(announcements.next(),
              windowChange("onLocationChange", R"("oldLocation":{"x":1,"y":2,"width":30,"height":40},)"
                                               R"("newLocation":{"x":-5,"y":6,"width":7,"height":8})"));
    EXPECT_EQ(call("IWindow::getLocation"), json::parse(R"({"x":-5,"y":6,"width":7,"height":8})"));
}

TEST_F(DrivenWindow, AcceptsStackingCallsAndDoesNothing)
{
    for (const std::string method : {"bringToFront", "sendToBack", "bringForward", "sendBackward"})
        EXPECT_EQ(call("IWindow::" + method), nullptr);
    EXPECT_EQ(call("IWindow::getZOrder"), 3);
}

TEST_F(DrivenWindow, GetsTheEventsThatAreSentToIt)
{
    EXPECT_EQ(call("IWindow::handleEvent", R"({"event":{"type":"KeyEvent","keyCode":500,"pressed":true}})"), true);
    EXPECT_TRUE(process.awaitOutput(R"(event {"type":"KeyEvent","keyCode":500,"pressed":true})"));
    EXPECT_EQ(call("IWindow::handleEvent", R"({"event":{"type":"MouseEvent","position":{"x":3,"y":4}}})"), false);
    EXPECT_TRUE(process.awaitOutput(R"("position":{"x":3,"y":4})"));
    EXPECT_EQ(call("IWindow::handleEvent", R"({"event":{"type":"AsciiEvent","asciiCode":65,"pressed":false}})"), false);
    EXPECT_TRUE(process.awaitOutput(R"(event {"type":"AsciiEvent","asciiCode":65,"pressed":false})"));
}

TEST_F(DrivenWindow, AnswersBadParametersWithWhatIsWrong)
{
    EXPECT_EQ(errorOf("IWindow::setOpacity", R"({"opacity":-1})"),
              "opacity: expected an unsigned 32-bit number, found -1");
    EXPECT_EQ(errorOf("IWindow::setOpacity", R"({"opacity":"x"})"),
              "opacity: expected an unsigned 32-bit number, found string");
    EXPECT_EQ(errorOf("IWindow::setOpacity"), "opacity: missing");
    EXPECT_EQ(errorOf("IWindow::handleEvent", R"({"event":{"type":"Foo"}})"), "event: unknown event type \"Foo\"");
    EXPECT_EQ(errorOf("IApplication::setState", R"({"requestedState":1})"),
              "requestedState: expected a string, found 1");
    EXPECT_EQ(errorOf("IService::authorizationTokenDeletion", R"({"token":1})"), "unknown interface");
    EXPECT_EQ(call("IWindow::getOpacity"), 200);
}

TEST_F(DrivenWindow, DescribesItself)
{
    const json document = call("rpc.discover");
    EXPECT_EQ(document["info"]["title"], "APPtoken-0123456789abcdef");
    EXPECT_EQ(document["methods"].size(), 21U);
    EXPECT_EQ(document["x-notifications"].size(), 7U);
    for (const json& method : document["methods"])
        EXPECT_TRUE(method.contains("summary")) << method;
}

TEST_F(DrivenWindow, ProvesThatItIsAlive)
{
    Announcements announcements(client);
    std::string announcement;
    ASSERT_TRUE(announcements.box.take(announcement));
    EXPECT_EQ(announcement, R"(IApplication::onKeepAlive {"uid":"token-0123456789abcdef","state":"RUNNING"})");
}

TEST_F(DrivenWindow, TerminatesOnRequestAndEndsCleanly)
{
    Announcements announcements(client);
    EXPECT_EQ(call("IApplication::terminate"), nullptr);
    EXPECT_EQ(announcements.untilGone(),
              (std::vector<std::string>{changeOf("RUNNING", "TERMINATING"), changeOf("TERMINATING", "TERMINATED")}));
    EXPECT_EQ(process.wait().status, 0) << process.getError();
    EXPECT_EQ(withoutMissingManager(process.getError()), "");
    EXPECT_TRUE(RPCClient::listServers().empty());
}

} // namespace

} // namespace Corvane::Test
