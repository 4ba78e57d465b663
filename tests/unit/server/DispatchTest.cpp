#include "ServerFakes.h"

#include <set>

/// The tables of a server and how calls find their handlers.
namespace Corvane::Test
{

namespace
{

std::set<std::string> namesOf(const RPCServer::MethodTable& table)
{
    std::set<std::string> names;
    for (const auto& entry : table)
        names.insert(entry.first);
    return names;
}

template <std::size_t N>
void addNames(const Method (&methods)[N], std::set<std::string>& names)
{
    for (const Method& method : methods)
        names.insert(method.name);
}

} // namespace

class Dispatch : public ServerTest
{
protected:
    Dispatch()
    {
        addNames(APPLICATION_METHODS, applicationNames);
        addNames(WINDOW_METHODS, windowNames);
        addNames(STACKING_METHODS, windowNames);
        addNames(SERVICE_METHODS, serviceNames);
    }

    std::set<std::string> applicationNames;
    std::set<std::string> windowNames;
    std::set<std::string> serviceNames;
};

TEST_F(Dispatch, NamesTheServerAfterTheApplicationsUid)
{
    TestWindow first({"program", "--application-type=player", "--authorization-token=a"});
    TestWindow second({"program", "--application-type=player", "--authorization-token=b"});

    EXPECT_EQ(APPRPCServer(&first).getName(), "APPa");
    EXPECT_EQ(APPRPCServer(&second).getName(), "APPb");
    EXPECT_EQ(serviceServer.getName(), "APPs");
}

TEST_F(Dispatch, HasTheTablesOfAWindow)
{
    EXPECT_EQ(namesOf(windowServer.applicationMethods), applicationNames);
    EXPECT_EQ(namesOf(windowServer.windowMethods), windowNames);
    EXPECT_TRUE(windowServer.serviceMethods.empty());
    ASSERT_EQ(windowServer.interfaces.size(), 2U);
    EXPECT_EQ(namesOf(windowServer.interfaces.at("IApplication")), applicationNames);
    EXPECT_EQ(namesOf(windowServer.interfaces.at("IWindow")), windowNames);
}

TEST_F(Dispatch, HasTheTablesOfAService)
{
    EXPECT_EQ(namesOf(serviceServer.applicationMethods), applicationNames);
    EXPECT_EQ(namesOf(serviceServer.serviceMethods), serviceNames);
    EXPECT_TRUE(serviceServer.windowMethods.empty());
    ASSERT_EQ(serviceServer.interfaces.size(), 2U);
    EXPECT_EQ(namesOf(serviceServer.interfaces.at("IApplication")), applicationNames);
    EXPECT_EQ(namesOf(serviceServer.interfaces.at("IService")), serviceNames);
}

TEST_F(Dispatch, AnswersTheMethodsOfItsFlavourOnly)
{
    EXPECT_TRUE(call(windowServer, "IApplication", "getState").contains("result"));
    EXPECT_TRUE(call(windowServer, "IWindow", "handleFocus", R"({"obtained":true})").contains("result"));
    EXPECT_EQ(call(windowServer, SERVICE_METHODS[0])["error"]["message"], "unknown interface");

    EXPECT_TRUE(call(serviceServer, "IApplication", "getState").contains("result"));
    EXPECT_TRUE(call(serviceServer, SERVICE_METHODS[0]).contains("result"));
    EXPECT_EQ(call(serviceServer, WINDOW_METHODS[0])["error"]["message"], "unknown interface");
}

TEST_F(Dispatch, AnswersAMethodThatNoInterfaceHasWithAnError)
{
    EXPECT_EQ(call(windowServer, "IWindow", "getState")["error"]["message"], "unknown method");
}

TEST_F(Dispatch, ReachesAHandlerThatASubclassOverrides)
{
    struct OwnServer : APPRPCServer {
        using APPRPCServer::APPRPCServer;
        using APPRPCServer::getOpacity;
        std::string getOpacity(const IRPC::RPCSynchronousMethodObject&) override { return "own"; }
    };
    OwnServer server(&window);

    EXPECT_EQ(callText(server, "IWindow", "getOpacity"), "own");
}

TEST_F(Dispatch, DoesNotSeeWhatIsAddedToATableAfterItsRegistration)
{
    windowServer.applicationMethods["later"] = windowServer.applicationMethods.at("getState");

    EXPECT_EQ(call(windowServer, "IApplication", "later")["error"]["message"], "unknown method");
}

TEST_F(Dispatch, AnswersBeforeTheWindowIsInitialised)
{
    for (const Method& method : APPLICATION_METHODS)
        EXPECT_TRUE(call(windowServer, method).contains("result")) << method.name;
    for (const Method& method : WINDOW_METHODS)
        EXPECT_TRUE(call(windowServer, method).contains("result")) << method.name;

    EXPECT_EQ(window.getOpacity(), 128U);
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_TERMINATING);
}

TEST_F(Dispatch, AnswersTheTextOfACall)
{
    EXPECT_EQ(windowServer.handleRPCSynchronousMethodPayload(
                  R"({"jsonrpc":"2.0","id":"a","method":"IWindow::setOpacity","params":{"opacity":9}})"),
              R"({"jsonrpc":"2.0","id":"a","result":null})");
    EXPECT_EQ(window.getOpacity(), 9U);
}

TEST_F(Dispatch, DoesNotLookAtTheParametersOfAMethodThatTakesNone)
{
    const auto answerTo = [this](const std::string& method, const std::string& parameters) {
        return windowServer.handleRPCSynchronousMethodPayload(R"({"jsonrpc":"2.0","id":17,"method":"IWindow::)" +
                                                              method + R"(","params":)" + parameters + "}");
    };
    for (const char* parameters : {"[1]", "5", "\"x\"", "null", "true", "{}", R"({"x":1})"}) {
        for (const Method& method : STACKING_METHODS)
            EXPECT_EQ(answerTo(method.name, parameters), resultText("null")) << parameters;
        EXPECT_EQ(answerTo("isFocused", parameters), resultText("false")) << parameters;
    }
    for (const char* parameters : {"[1]", "5", "\"x\"", "null", "true"})
        EXPECT_EQ(answerTo("setOpacity", parameters),
                  R"({"jsonrpc":"2.0","id":17,"error":{"code":-32602,"message":"params: expected an object"}})");
}

} // namespace Corvane::Test
