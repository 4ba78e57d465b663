#include "ProcmandFixture.h"

#include <corvane/common/RPCServer.h>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sstream>

using namespace Corvane::Test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

class ProcmandWindows : public WithProcmand
{
protected:
    /// The windows of the box from the front to the back, as members.
    static std::vector<std::map<std::string, std::string>> windows()
    {
        std::vector<std::map<std::string, std::string>> found;
        std::istringstream lines(corvanectl({"windows", "--json"}).output);
        for (std::string line; std::getline(lines, line);)
            found.push_back(readMembers(line));
        return found;
    }
    /// Their applications, from the front to the back.
    static std::vector<std::string> order()
    {
        std::vector<std::string> uids;
        for (auto& window : windows())
            uids.push_back(window["uid"]);
        return uids;
    }
    static std::string indexOf(const std::string& uid)
    {
        for (auto& window : windows())
            if (window["uid"] == uid)
                return window["index"];
        return "none";
    }
    void stack(const std::string& operation, const std::string& uid)
    {
        call("IWindowCompositing::" + operation, "{\"index\":" + indexOf(uid) + "}");
    }
    void setFocus(const std::string& uid, bool obtained = true)
    {
        call("IWindowCompositing::setFocus",
             R"({"uid":")" + uid + R"(","obtained":)" + (obtained ? "true" : "false") + "}");
    }
};

} // namespace

TEST_F(ProcmandWindows, GrantsAWindowWithItsSettings)
{
    startProcmand();
    const std::string uid = launchVictim("", R"("compositingParameters":{"location":{"x":1,"y":2,"width":30,)"
                                             R"("height":40},"zOrder":5,"opacity":100,"visibility":false})");

    ASSERT_EQ(windows().size(), 1U);
    const auto window = windows().front();
    EXPECT_EQ(window.at("uid"), uid);
    EXPECT_EQ(window.at("zOrder"), "5");
    EXPECT_EQ(window.at("opacity"), "100");
    EXPECT_EQ(window.at("visibility"), "false");
    EXPECT_EQ(corvanectl({"location", uid}).output, "1,2,30,40\n");
    EXPECT_EQ(find(uid)["zOrder"], "5");
}

TEST_F(ProcmandWindows, ComposesWhatTheApplicationsAreTold)
{
    startProcmand();
    const std::string uid = launchVictim();
    corvanectl({"visibility", uid, "off"});
    EXPECT_NE(announcements.take({"IWindowCompositing::onVisibilityChange", uid, R"("newVisibility":false)"}), "");
    EXPECT_NE(announcements.take({"IWindow::onVisibilityChange", uid, R"("newVisibility":false)"}), "");
    corvanectl({"call", uid, "IWindow::setOpacity", "opacity=300"});
    EXPECT_NE(announcements.take({"IWindow::onOpacityChange", uid, R"("newOpacity":44)"}), "");
    corvanectl({"z-order", uid, "7"});
    corvanectl({"location", uid, "5,6,70,80"});

    // The getters ask the compositor, which took the whole opacity and kept it in its range.
    EXPECT_EQ(corvanectl({"visibility", uid}).output, "off\n");
    EXPECT_EQ(corvanectl({"opacity", uid}).output, "255\n");
    EXPECT_EQ(corvanectl({"z-order", uid}).output, "7\n");
    EXPECT_EQ(corvanectl({"location", uid}).output, "5,6,70,80\n");
}

TEST_F(ProcmandWindows, StacksAsPeopleExpect)
{
    startProcmand();
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    const std::string c = launchVictim();
    EXPECT_THAT(order(), ElementsAre(c, b, a)) << "the latest is in front";

    stack("bringToFront", a);
    EXPECT_THAT(order(), ElementsAre(a, c, b));
    EXPECT_NE(announcements.take({"IWindowCompositing::onZOrderChange", a}), "");
    stack("sendToBack", c);
    EXPECT_THAT(order(), ElementsAre(a, b, c));
    stack("bringForward", c);
    EXPECT_THAT(order(), ElementsAre(a, c, b));
    stack("sendBackward", a);
    EXPECT_THAT(order(), ElementsAre(c, a, b));
    EXPECT_EQ(announcements.count({"IWindow::onZOrderChange"}), 0U) << "stacking is not announced by the windows";
    EXPECT_EQ(refusalOf("IWindowCompositing::bringToFront", R"({"index":4711})"), "there is no window 4711");
}

TEST_F(ProcmandWindows, TakesTheWindowsOfADeadClientBack)
{
    startProcmand();
    const std::string uid = launchVictim();
    kill(pidOf(uid), SIGKILL);

    EXPECT_NE(announcements.take({"IWindowCompositing::onWindowRelease", uid}), "");
    EXPECT_TRUE(windows().empty());
}

TEST_F(ProcmandWindows, TakesAWindowBackThatIsGivenBack)
{
    startProcmand();
    const std::string uid = launchVictim();
    corvanectl({"terminate", uid});

    // The window goes before its process does.
    ASSERT_NE(announcements.take({"IWindowCompositing::onWindowRelease", uid}), "");
    EXPECT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
}

TEST_F(ProcmandWindows, GrantsNoWindowWhenAllAreInUseAndLogsWhy)
{
    startProcmand({"--windows", "1"});
    launchVictim();
    const std::string uid = launch(PROCMAND_VICTIM, {}, R"("applicationType":"test")");

    // The application ends with the code of the exception that its initialisation threw.
    EXPECT_THAT(announcements.take({"IApplicationManager::onEnd", uid}),
                AllOf(HasSubstr("\"exitCode\":7"), HasSubstr("RESOURCE_TYPE_GRAPHICS_WINDOW failed")));
    EXPECT_THAT(procmand->getError(), HasSubstr(uid + " gets no window: all 1 are in use"));
}

TEST_F(ProcmandWindows, RefusesBadRequestsWithATokenAndLogsWhy)
{
    startProcmand();
    const std::string pid = std::to_string(getpid());
    const auto tokenFor = [&](const std::string& members) {
        return call("IResourceAcquisition::getResource", "{" + members + "}");
    };
    const std::string good = R"("uid":"tester","pid":)" + pid + R"(,"clientType":3,"resourceType":1,"settings":{})";
    const std::string refused = R"({"state":1,"resourceIndex":0})";
    EXPECT_EQ(tokenFor(""), refused);
    EXPECT_EQ(tokenFor(R"("uid":"tester","pid":)" + pid + R"(,"clientType":3,"resourceType":2,"settings":{})"),
              refused);
    EXPECT_EQ(tokenFor(R"("uid":"tester","pid":)" + pid + R"(,"clientType":1,"resourceType":1,"settings":{})"),
              refused);
    EXPECT_EQ(tokenFor(R"("uid":"tester","pid":0,"clientType":3,"resourceType":1,"settings":{})"), refused);
    EXPECT_EQ(tokenFor(R"("uid":"tester","pid":)" + pid + R"(,"clientType":3,"resourceType":1,"settings":)" +
                       R"({"location":{"x":0,"y":0,"width":0,"height":9}})"),
              refused);
    for (const char* reason : {"uid: missing", "no resource of that type", "no window application",
                               "process 0 is not the caller's own", "a window without a size"})
        EXPECT_THAT(procmand->getError(), HasSubstr(reason));

    EXPECT_THAT(tokenFor(good), HasSubstr(R"("state":3)"));
}

TEST_F(ProcmandWindows, RefusesOperationsOnASurfaceBeforeThereIsOne)
{
    startProcmand();
    const std::string file = state.getPath() + "/go";
    const std::string uid =
        launch(PROCMAND_VICTIM, {}, R"("applicationType":"test","applicationParameters":"hold-init=)" + file + "\"");
    ASSERT_TRUE(await([&] { return corvanectl({"state", uid}).status == 0; }));

    EXPECT_EQ(corvanectl({"opacity", uid, "1"}).error, "corvanectl: Invalid state\n");
    EXPECT_EQ(corvanectl({"opacity", uid}).error, "corvanectl: Invalid state\n");

    std::ofstream(file).close();
    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_EQ(corvanectl({"opacity", uid, "1"}).status, 0);
}

TEST_F(ProcmandWindows, MovesTheFocusFromOneToTheOther)
{
    startProcmand();
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    setFocus(a);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":"","uid":")" + a}), "");
    EXPECT_EQ(find(a)["focus"], "true");

    setFocus(b);
    if (!mayLowerNice())
        GTEST_SKIP() << "a window cannot lose the focus here: its process may not go back to nice 0";
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + a, R"("uid":")" + b}), "");
    // Each application has a connection of its own to the process manager, so these two come in any order.
    EXPECT_TRUE(await([&] {
        return announcements.count({"IWindow::onFocusChange", a, R"("newIsFocused":false)"}) == 1;
    }));
    EXPECT_TRUE(await([&] {
        return announcements.count({"IWindow::onFocusChange", b, R"("newIsFocused":true)"}) == 1;
    }));
    EXPECT_EQ(find(b)["focus"], "true");
    EXPECT_EQ(find(a)["focus"], "false");

    setFocus(b, false);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + b + R"(","uid":"")"}), "");
    EXPECT_EQ(find(b)["focus"], "false");
}

TEST_F(ProcmandWindows, GivesTheFocusOnWhenTheOldWindowCannotBeTold)
{
    startProcmand({"--call-deadline", "0.3", "--keep-alive-deadline", "60"});
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    setFocus(a);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", a}), "");
    freeze(a);

    setFocus(b);
    ASSERT_NE(announcements.take({"IWindow::onFocusChange", b, R"("newIsFocused":true)"}), "");
    EXPECT_THAT(procmand->getError(), HasSubstr(a + " cannot be told that it loses the focus"))
        << "the old one is told first";
    EXPECT_TRUE(awaitMember(b, "focus", "true"));
    EXPECT_EQ(find(a)["focus"], "false");
}

TEST_F(ProcmandWindows, GivesTheFocusToNobodyWhenTheNewWindowCannotBeTold)
{
    startProcmand({"--call-deadline", "0.3", "--keep-alive-deadline", "60"});
    const std::string uid = launchVictim();
    freeze(uid);
    setFocus(uid);

    EXPECT_THAT(announcements.take({"IWindowCompositing::onFocusFailure", uid}), HasSubstr("Timed out"));
    EXPECT_EQ(find(uid)["focus"], "false");
    EXPECT_EQ(refusalOf("IWindowCompositing::setFocus", R"({"uid":"nobody","obtained":true})"),
              "there is no application nobody");
}

TEST_F(ProcmandWindows, TakesTheFocusAwayFromADeadWindow)
{
    startProcmand();
    const std::string uid = launchVictim();
    setFocus(uid);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + uid}), "");
    kill(pidOf(uid), SIGKILL);

    EXPECT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + uid + R"(","uid":"")"}), "");
}

TEST_F(ProcmandWindows, GivesOneThatIsStartedAgainItsPlaceAndTheFocusBack)
{
    startProcmand({"--restart-delay", "0.02"});
    const std::string a = launchVictim();
    const std::string b = launchVictim("fading", R"("restart":"on-failure","compositingParameters":{"opacity":200})");
    const std::string c = launchVictim();
    corvanectl({"location", b, "1,2,30,40"});
    corvanectl({"opacity", b, "9"});
    corvanectl({"focus", b, "on"});
    kill(pidOf(b), SIGKILL);
    ASSERT_TRUE(awaitMember(b, "restarts", "1"));

    ASSERT_TRUE(awaitMember(b, "state", "RUNNING"));
    EXPECT_TRUE(awaitMember(b, "focus", "true"));
    EXPECT_NE(announcements.take({"IWindow::onFocusChange", b, R"("newIsFocused":true)"}), "") << "it knows, too";
    EXPECT_THAT(order(), ElementsAre(c, b, a)) << "as before, although all have one z-order";
    EXPECT_EQ(corvanectl({"location", b}).output, "1,2,30,40\n");
    EXPECT_EQ(corvanectl({"opacity", b}).output, "9\n");

    // This one ends in order: it fades out and gives its window back before it does.
    corvanectl({"z-order", b, "7"});
    corvanectl({"opacity", b, "8"});
    call("IApplicationManager::restart", write({{"uid", b}}));
    ASSERT_TRUE(awaitMember(b, "restarts", "2"));
    ASSERT_TRUE(awaitMember(b, "state", "RUNNING"));
    EXPECT_TRUE(awaitMember(b, "focus", "true"));
    EXPECT_EQ(find(b)["zOrder"], "7");
    corvanectl({"call", b, "IWindow::setOpacity", "opacity=6"});
    EXPECT_NE(announcements.take({"IWindow::onOpacityChange", b, R"("oldOpacity":8,"newOpacity":6)"}), "")
        << "the window itself knows its place";
}

TEST_F(ProcmandWindows, DoesNotTakeTheFocusFromOneThatGotItMeanwhile)
{
    startProcmand({"--restart-delay", "1000", "--restart-delay-limit", "1000"});
    const std::string a = launchVictim();
    const std::string b = launchVictim("", R"("restart":"on-failure")");
    setFocus(b);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + b}), "");
    kill(pidOf(b), SIGKILL);
    ASSERT_NE(announcements.take({"IApplicationManager::onRestartDelay", b}), "");
    setFocus(a);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + a}), "");
    // Nor does it get what it has lost once when that one ends.
    kill(pidOf(a), SIGKILL);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + a}), "");
    call("IApplicationManager::restart", write({{"uid", b}}));

    ASSERT_TRUE(awaitMember(b, "state", "RUNNING"));
    EXPECT_EQ(find(b)["focus"], "false");
    // A move that had begun would be announced before this one.
    const std::string c = launchVictim();
    setFocus(c);
    EXPECT_EQ(readMembers(announcements.take({"IWindowCompositing::onFocusMove"}).substr(31))["uid"], c);
}

TEST_F(ProcmandWindows, StartsOneAfreshThatIsToBeFresh)
{
    startProcmand();
    const Outcome outcome = corvanectl({"launch", "--fresh", "--type", "test", "--opacity", "200", PROCMAND_VICTIM});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    const std::string uid = outcome.output.substr(0, outcome.output.size() - 1);
    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    const std::string other = launchVictim();
    corvanectl({"opacity", uid, "9"});
    setFocus(uid);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + uid}), "");
    call("IApplicationManager::restart", write({{"uid", uid}}));
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + uid}), "");

    ASSERT_TRUE(awaitMember(uid, "restarts", "1"));
    ASSERT_TRUE(awaitMember(uid, "state", "RUNNING"));
    EXPECT_EQ(corvanectl({"opacity", uid}).output, "200\n");
    EXPECT_THAT(order(), ElementsAre(uid, other));
    setFocus(other);
    EXPECT_EQ(readMembers(announcements.take({"IWindowCompositing::onFocusMove"}).substr(31))["uid"], other);
}

TEST_F(ProcmandWindows, NoticesAWindowThatGotTheFocusElsewhere)
{
    startProcmand();
    const std::string a = launchVictim();
    const std::string b = launchVictim();
    setFocus(a);
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("uid":")" + a}), "");

    // Past the process manager.
    corvanectl({"call", b, "IWindow::handleFocus", "obtained=true"});
    ASSERT_NE(announcements.take({"IWindowCompositing::onFocusMove", R"("oldUid":")" + a, R"("uid":")" + b}), "");
    EXPECT_EQ(find(a)["focus"], "false");
}

TEST_F(ProcmandWindows, LetsAnApplicationSpeakForItselfOnlyAndInTheInterfacesOfApplications)
{
    startProcmand({"--keep-alive-deadline", "3600"});
    const std::string other = launchVictim();
    Corvane::RPCServer server("APPtester");
    server.init();
    call("IApplicationManager::registerApplication", R"({"uid":"tester","pid":)" + std::to_string(getpid()) + "}");
    ASSERT_TRUE(awaitMember("tester", "hasServer", "true"));

    server.handleRPCNotification("IApplication::onStateChange",
                                 R"({"uid":")" + other + R"(","oldState":"RUNNING","newState":"FORGED"})");
    server.handleRPCNotification("IApplicationManager::onStop", R"({"uid":"tester","means":"FORGED"})");
    server.handleRPCNotification("IApplication::onForged", "{}");
    server.handleRPCNotification("IApplication::onStateChange",
                                 R"({"uid":"tester","oldState":"LOADING","newState":"RUNNING"})");

    ASSERT_NE(announcements.take({"IApplication::onStateChange", "tester"}), "");
    EXPECT_EQ(announcements.count({"FORGED"}), 0U);
    EXPECT_EQ(announcements.count({"onForged"}), 0U);
    EXPECT_EQ(find("tester")["state"], "RUNNING");
    EXPECT_EQ(find(other)["state"], "RUNNING");
}

TEST_F(ProcmandWindows, PassesEverythingOnThatTheApplicationsAnnounce)
{
    startProcmand();
    const std::string uid = launchVictim();
    EXPECT_NE(announcements.take({"IApplication::onKeepAlive", uid, "RUNNING"}), "");
    corvanectl({"opacity", uid, "12"});
    EXPECT_NE(announcements.take({"IWindow::onOpacityChange", uid, R"("oldOpacity":255,"newOpacity":12)"}), "");
    corvanectl({"suspend", uid});
    EXPECT_NE(announcements.take({"IApplication::onStateChange", uid, R"("newState":"SUSPENDING")"}), "");
    killAtRest(uid, SIGABRT);
    EXPECT_NE(announcements.take({"IApplication::onStateChange", uid, R"("newState":"ABORTED")"}), "")
        << "the last words, too";
    EXPECT_NE(announcements.take({"IApplicationManager::onEnd", uid}), "");
}
