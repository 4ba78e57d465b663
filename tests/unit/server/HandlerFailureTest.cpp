#include "ServerFakes.h"

#include <corvane/foundation/Exception.h>
#include <iterator>
#include <stdexcept>
#include <support/CapturedOutput.h>
#include <vector>

/// What becomes of a handler's failure.
namespace Corvane::Test
{

namespace
{

/// A window every operation of which fails as the test wants.
class FailingWindow : public TestWindow
{
public:
    using TestWindow::activate;
    using TestWindow::getLocation;
    using TestWindow::getOpacity;
    using TestWindow::getRuntimeStatistics;
    using TestWindow::getState;
    using TestWindow::getVisibility;
    using TestWindow::getZOrder;
    using TestWindow::handleEvent;
    using TestWindow::handleFocus;
    using TestWindow::isFocused;
    using TestWindow::setLocation;
    using TestWindow::setOpacity;
    using TestWindow::setState;
    using TestWindow::setVisibility;
    using TestWindow::setZOrder;
    using TestWindow::suspend;
    using TestWindow::terminate;
    using TestWindow::TestWindow;

    std::string getState() override { return fail(), TestWindow::getState(); }
    void setState(const std::string&) override { fail(); }
    void activate() override { fail(); }
    void suspend() override { fail(); }
    void terminate() override { fail(); }
    RuntimeStatistics getRuntimeStatistics() override { return fail(), RuntimeStatistics(); }
    void handleFocus(bool) override { fail(); }
    bool isFocused() override { return fail(), false; }
    bool handleEvent(const Event&) override { return fail(), false; }
    void setVisibility(bool) override { fail(); }
    bool getVisibility() override { return fail(), false; }
    void setOpacity(unsigned int) override { fail(); }
    unsigned int getOpacity() override { return fail(), 0; }
    void setZOrder(unsigned int) override { fail(); }
    unsigned int getZOrder() override { return fail(), 0; }
    void setLocation(const Rect&) override { fail(); }
    Rect getLocation() override { return fail(), Rect(0, 0, 0, 0); }

    std::function<void()> failure;

private:
    void fail() { failure(); }
};

std::vector<Method> guardedMethods()
{
    std::vector<Method> methods(std::begin(APPLICATION_METHODS), std::end(APPLICATION_METHODS));
    methods.insert(methods.end(), std::begin(WINDOW_METHODS), std::end(WINDOW_METHODS));
    methods.insert(methods.end(), std::begin(SERVICE_METHODS), std::end(SERVICE_METHODS));
    return methods;
}

void throwText()
{
    throw std::runtime_error("x");
}

void throwCode()
{
    throw Exception(RETURN_INVALID_STATE);
}

void throwNumber()
{
    throw 5;
}

} // namespace

/// Calls one method on a window, or a service, that fails.
class HandlerFailure : public WindowTest, public ::testing::WithParamInterface<Method>
{
protected:
    std::string callFailing(void (*failure)())
    {
        window.failure = failure;
        service.failure = failure;
        RPCServer& server = isOfService() ? static_cast<RPCServer&>(serviceServer) : windowServer;
        std::string reply = callText(server, GetParam().interface, GetParam().name, GetParam().parameters);
        window.failure = [] {};
        return reply;
    }

    bool isOfService() const { return std::string("IService") == GetParam().interface; }

    /// The one line that the handler has written into `error`.
    void expectLine(const CapturedOutput& error, const std::string& message)
    {
        const std::vector<DebugLine> lines = error.getDebugLines();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].message, GetParam().name + message);
        EXPECT_EQ(lines[0].level, 'E');
        EXPECT_EQ(lines[0].module, "APPRPCServer");
        EXPECT_EQ(lines[0].component, "APPRPCServer");
    }

    FailingWindow window{{"program", "--application-type=player", "--authorization-token=w"}};
    TestService service{{"program", "--authorization-token=s"}};
    APPRPCServer windowServer{&window};
    APPRPCServer serviceServer{&service};
};

TEST_P(HandlerFailure, AnswersAStandardExceptionWithItsText)
{
    CapturedOutput error;
    EXPECT_EQ(callFailing(throwText), errorText("x"));
    expectLine(error, "(): caught exception: x");
}

TEST_P(HandlerFailure, AnswersAResultCodeWithItsText)
{
    CapturedOutput error;
    EXPECT_EQ(callFailing(throwCode), errorText("Invalid state"));
    expectLine(error, "(): caught exception: Invalid state");
}

TEST_P(HandlerFailure, AnswersAnythingElseAsUnknown)
{
    CapturedOutput error;
    EXPECT_EQ(callFailing(throwNumber), errorText("unknown"));
    expectLine(error, "(): caught unknown exception");
}

INSTANTIATE_TEST_SUITE_P(EveryMethod, HandlerFailure, ::testing::ValuesIn(guardedMethods()),
                         [](const auto& info) { return std::string(info.param.name); });

/// Calls one method after the served object has terminated.
class InvalidProxy : public ServerTest, public ::testing::WithParamInterface<Method>
{
protected:
    OpenServer& server() { return std::string("IService") == GetParam().interface ? serviceServer : windowServer; }
};

TEST_P(InvalidProxy, IsTheAnswerOnceTheServedObjectHasTerminated)
{
    for (const std::string& state : {ILifecycleManagement::STATE_TERMINATED, ILifecycleManagement::STATE_ABORTED,
                                     ILifecycleManagement::STATE_RUNAWAY}) {
        OpenServer fresh = GetParam().interface == std::string("IService") ? OpenServer(&service) : OpenServer(&window);
        EXPECT_TRUE(call(fresh, GetParam()).contains("result"));
        fresh.onStateChange("u", ILifecycleManagement::STATE_RUNNING, state);

        EXPECT_EQ(callText(fresh, GetParam().interface, GetParam().name, GetParam().parameters),
                  errorText("invalid proxy"));
    }
}

TEST_P(InvalidProxy, ComesAfterABadParameter)
{
    window.setState(ILifecycleManagement::STATE_TERMINATED);
    service.setState(ILifecycleManagement::STATE_TERMINATED);
    ASSERT_EQ(server().getSingleton(), nullptr);
    const Json parameters = Json::parse(GetParam().parameters);

    for (const auto& [key, value] : parameters.items()) {
        Json incomplete = parameters;
        incomplete.erase(key);
        const Json reply = call(server(), GetParam().interface, GetParam().name, incomplete.dump());
        const std::string message = reply["error"]["message"];
        EXPECT_NE(message, "invalid proxy");
        EXPECT_NE(message.find(key), std::string::npos) << message;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryMethod, InvalidProxy, ::testing::ValuesIn(guardedMethods()),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace Corvane::Test
