#pragma once

#include "WindowFakes.h"
#include <corvane/APPRPCServer.h>
#include <corvane/common/Service.h>
#include <nlohmann/json.hpp>

namespace Corvane::Test
{

using Json = nlohmann::json;

/// A method and parameters that it accepts.
struct Method {
    const char* interface;
    const char* name;
    const char* parameters;
};

inline const Method APPLICATION_METHODS[] = {
    {"IApplication", "getState", "{}"},  {"IApplication", "setState", R"({"requestedState":"RUNNING"})"},
    {"IApplication", "activate", "{}"},  {"IApplication", "suspend", "{}"},
    {"IApplication", "terminate", "{}"}, {"IApplication", "getRuntimeStatistics", "{}"},
};

/// The methods of a window that do something.
inline const Method WINDOW_METHODS[] = {
    {"IWindow", "handleFocus", R"({"obtained":true})"},
    {"IWindow", "isFocused", "{}"},
    {"IWindow", "handleEvent", R"({"event":{"type":"KeyEvent","keyCode":28,"pressed":true}})"},
    {"IWindow", "setVisibility", R"({"visibility":false})"},
    {"IWindow", "getVisibility", "{}"},
    {"IWindow", "setOpacity", R"({"opacity":128})"},
    {"IWindow", "getOpacity", "{}"},
    {"IWindow", "setZOrder", R"({"zorder":7})"},
    {"IWindow", "getZOrder", "{}"},
    {"IWindow", "setLocation", R"({"location":{"x":1,"y":-2,"width":3,"height":4}})"},
    {"IWindow", "getLocation", "{}"},
};

inline const Method STACKING_METHODS[] = {
    {"IWindow", "bringToFront", "{}"},
    {"IWindow", "sendToBack", "{}"},
    {"IWindow", "bringForward", "{}"},
    {"IWindow", "sendBackward", "{}"},
};

inline const Method SERVICE_METHODS[] = {
    {"IService", "authorizationTokenCreation", R"({"authAttrInternal":"{}","token":5})"},
    {"IService", "authorizationTokenDeletion", R"({"token":5})"},
};

/// Calls a method as the transport does. @return the text of the reply
inline std::string callText(RPCServer& server, const std::string& interface, const std::string& name,
                            const std::string& parameters = "{}")
{
    return server.handleRPCSynchronousMethod({interface, name, parameters, "17"});
}

inline Json call(RPCServer& server, const std::string& interface, const std::string& name,
                 const std::string& parameters = "{}")
{
    return Json::parse(callText(server, interface, name, parameters));
}

inline Json call(RPCServer& server, const Method& method)
{
    return call(server, method.interface, method.name, method.parameters);
}

/// The replies as the protocol writes them.
inline std::string resultText(const std::string& value)
{
    return R"({"jsonrpc":"2.0","id":17,"result":)" + value + "}";
}

inline std::string errorText(const std::string& message)
{
    return R"({"jsonrpc":"2.0","id":17,"error":{"code":-32000,"message":")" + message + "\"}}";
}

/// Opens the parts of a server that a derived class may reach.
class OpenServer : public APPRPCServer
{
public:
    using APPRPCServer::applicationMethods;
    using APPRPCServer::APPRPCServer;
    using APPRPCServer::serviceMethods;
    using APPRPCServer::windowMethods;
    using APPServer::getService;
    using APPServer::getWindow;
    using RPCServer::description;
    using RPCServer::interfaces;
};

/// Writes each notification of a server into the journal: its name, a space, its payload.
class RecordingSubscriber : public IRPC::IRPCListener
{
public:
    void handleRPCNotification(const IRPC::RPCNotificationObject& notification) override
    {
        journal.add(notification.getName() + " " + notification.getPayload());
        if (action)
            action();
    }

    std::function<void()> action;
};

/// A service as an author makes one; the tokens that reach it are in the journal.
class TestService : public Application, public Service
{
public:
    explicit TestService(Arguments given) : Application(given.count(), given.values()), arguments(std::move(given)) {}

    std::string getUid() override { return Application::getUid(); }
    void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) override
    {
        journal.add("create " + std::to_string(token) + " " + attributes.serialize());
        if (failure)
            failure();
    }
    void deleteAuthorizationToken(unsigned int token) override
    {
        journal.add("delete " + std::to_string(token));
        if (failure)
            failure();
    }
    void addListener(IListener* listener) override
    {
        journal.add("service.addListener");
        Application::addListener(listener);
    }
    void removeListener(IListener* listener) override
    {
        journal.add("service.removeListener");
        Application::removeListener(listener);
    }

    std::function<void()> failure;

private:
    const Arguments arguments;
};

/// A window that tells of its registrations.
class ServedWindow : public TestWindow
{
public:
    using TestWindow::TestWindow;

    void addListener(IListener* listener) override
    {
        journal.add("window.addListener");
        TestWindow::addListener(listener);
    }
    void removeListener(IListener* listener) override
    {
        journal.add("window.removeListener");
        TestWindow::removeListener(listener);
    }
};

/// A window and a service with servers that are registered with them but not on any transport.
class ServerTest : public WindowTest
{
protected:
    ServerTest()
    {
        windowServer.APPServer::init();
        serviceServer.APPServer::init();
        journal.clear();
    }

    ServedWindow window{{"program", "--application-type=player", "--authorization-token=w", "--z-order=3",
                         "--opacity=200", "--location=1,2,3,4"}};
    TestService service{{"program", "--authorization-token=s"}};
    OpenServer windowServer{&window};
    OpenServer serviceServer{&service};
};

} // namespace Corvane::Test
