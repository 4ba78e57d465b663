#include "ServerFakes.h"

/// The methods of IWindow.
namespace Corvane::Test
{

class WindowMethods : public ServerTest
{
protected:
    std::string callWindow(const std::string& method, const std::string& parameters = "{}")
    {
        return callText(windowServer, "IWindow", method, parameters);
    }

    /// Expects an error reply whose message names the key.
    void expectRefusal(const std::string& method, const std::string& key, const std::string& value)
    {
        const std::string parameters = "{\"" + key + "\":" + value + "}";
        const Json reply = call(windowServer, "IWindow", method, parameters);
        ASSERT_TRUE(reply.contains("error")) << method << parameters;
        EXPECT_EQ(reply["error"]["code"], -32000);
        EXPECT_NE(reply["error"]["message"].get<std::string>().find(key), std::string::npos) << reply;
    }
};

TEST_F(WindowMethods, GiveAndTakeTheFocus)
{
    EXPECT_EQ(callWindow("handleFocus", R"({"obtained":true})"), resultText("null"));
    EXPECT_EQ(callWindow("isFocused"), resultText("true"));
    EXPECT_TRUE(window.isFocused());

    EXPECT_EQ(callWindow("handleFocus", R"({"obtained":false})"), resultText("null"));
    EXPECT_EQ(callWindow("isFocused"), resultText("false"));
}

TEST_F(WindowMethods, ReportAFocusThatTheSystemRefuses)
{
    priority.failure = EACCES;

    EXPECT_EQ(callWindow("handleFocus", R"({"obtained":true})"), errorText("Generic failure"));
}

TEST_F(WindowMethods, SetAndTellTheVisibility)
{
    EXPECT_EQ(callWindow("getVisibility"), resultText("true"));
    EXPECT_EQ(callWindow("setVisibility", R"({"visibility":false})"), resultText("null"));
    EXPECT_EQ(callWindow("getVisibility"), resultText("false"));
}

TEST_F(WindowMethods, SetAndTellTheOpacity)
{
    EXPECT_EQ(callWindow("getOpacity"), resultText("200"));
    EXPECT_EQ(callWindow("setOpacity", R"({"opacity":300})"), resultText("null"));
    EXPECT_EQ(callWindow("getOpacity"), resultText("44"));
}

TEST_F(WindowMethods, SetAndTellTheZOrder)
{
    EXPECT_EQ(callWindow("getZOrder"), resultText("3"));
    EXPECT_EQ(callWindow("setZOrder", R"({"zorder":4294967295})"), resultText("null"));
    EXPECT_EQ(callWindow("getZOrder"), resultText("4294967295"));
}

TEST_F(WindowMethods, SetAndTellTheLocation)
{
    EXPECT_EQ(callWindow("getLocation"), resultText(R"({"x":1,"y":2,"width":3,"height":4})"));
    EXPECT_EQ(callWindow("setLocation", R"({"location":{"x":-10,"y":20,"width":640,"height":480}})"),
              resultText("null"));
    EXPECT_EQ(callWindow("getLocation"), resultText(R"({"x":-10,"y":20,"width":640,"height":480})"));
}

TEST_F(WindowMethods, RefuseParametersThatAreMissingOrOfAnotherType)
{
    const std::vector<std::pair<std::string, std::string>> parameters = {
        {"handleFocus", "obtained"}, {"setVisibility", "visibility"}, {"setOpacity", "opacity"},
        {"setZOrder", "zorder"},     {"setLocation", "location"},     {"handleEvent", "event"}};
    for (const auto& [method, key] : parameters) {
        const Json missing = call(windowServer, "IWindow", method);
        EXPECT_NE(missing["error"]["message"].get<std::string>().find(key), std::string::npos) << missing;
        for (const char* value : {"\"text\"", "null", "[]", "1.5"})
            expectRefusal(method, key, value);
    }
    EXPECT_TRUE(journal.read().empty());
}

TEST_F(WindowMethods, RefuseNumbersThatAreNotUnsigned)
{
    for (const char* value : {"-1", "4294967296", "1.5", "\"5\"", "true"}) {
        expectRefusal("setOpacity", "opacity", value);
        expectRefusal("setZOrder", "zorder", value);
    }
    EXPECT_EQ(window.getOpacity(), 200U);
    EXPECT_EQ(window.getZOrder(), 3U);
}

TEST_F(WindowMethods, RefuseALocationThatIsIncomplete)
{
    expectRefusal("setLocation", "location", R"({"x":1,"y":2,"width":3})");
    expectRefusal("setLocation", "location", R"({"x":1,"y":2,"width":-3,"height":4})");
    EXPECT_EQ(text(window.getLocation()), text(Rect(1, 2, 3, 4)));
}

TEST_F(WindowMethods, RefuseAnEventOfAnUnknownType)
{
    expectRefusal("handleEvent", "event", R"({"type":"TouchEvent","x":1})");
    expectRefusal("handleEvent", "event", R"({"keyCode":1,"pressed":true})");
}

TEST_F(WindowMethods, HandTheWindowAnEventOfItsOwnClassAndTellWhetherItUsedIt)
{
    struct UsingWindow : TestWindow {
        using TestWindow::handleEvent;
        using TestWindow::TestWindow;
        bool handleEvent(const Event& event) override
        {
            journal.add(event.getTypeName());
            return dynamic_cast<const IWindowEvent::KeyEvent*>(&event) != nullptr;
        }
    };
    UsingWindow own({"program", "--application-type=player"});
    APPRPCServer server(&own);
    const auto send = [&](const std::string& event) {
        return callText(server, "IWindow", "handleEvent", "{\"event\":" + event + "}");
    };

    EXPECT_EQ(send(R"({"type":"KeyEvent","keyCode":28,"pressed":true})"), resultText("true"));
    EXPECT_EQ(send(R"({"type":"AsciiEvent","asciiCode":65,"pressed":true})"), resultText("false"));
    EXPECT_EQ(send(R"({"type":"MouseEvent","position":{"x":3,"y":4}})"), resultText("false"));

    EXPECT_EQ(journal.read(), (Journal::Entries{"KeyEvent", "AsciiEvent", "MouseEvent"}));
}

TEST_F(WindowMethods, AnswerFalseForAnEventThatTheWindowItselfGets)
{
    EXPECT_EQ(callWindow("handleEvent", WINDOW_METHODS[2].parameters), resultText("false"));
}

TEST_F(WindowMethods, DoNothingForTheStackAndAlwaysSucceed)
{
    for (const Method& method : STACKING_METHODS)
        EXPECT_EQ(callWindow(method.name, R"({"unused":1})"), resultText("null"));
    window.setState(ILifecycleManagement::STATE_TERMINATED);
    for (const Method& method : STACKING_METHODS)
        EXPECT_EQ(callWindow(method.name), resultText("null"));

    EXPECT_TRUE(journal.read().empty());
    EXPECT_EQ(window.getZOrder(), 3U);
}

} // namespace Corvane::Test
