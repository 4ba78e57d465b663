#include "TestServer.h"

#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/foundation/ValueObjects.h>

namespace Corvane::Test
{

namespace
{

constexpr RPCParameterDescription TEXT[] = {{"text", R"({"type":"string"})"}};
constexpr RPCMethodDescription METHODS[] = {{"ITest", "echo", "Gives a text back", TEXT, R"({"type":"string"})"}};
constexpr RPCParameterDescription NUMBER[] = {{"number", R"({"type":"integer"})"}};
constexpr RPCNotificationDescription NOTIFICATIONS[] = {{"ITest::onRing", "Somebody rang", NUMBER}};

} // namespace

TestServer::TestServer(const char* name) : RPCServer(name)
{
    interfaces["ITest"] = {{"echo", static_cast<Handler>(&TestServer::echo)},
                           {"repeat", static_cast<Handler>(&TestServer::repeat)},
                           {"writeOnSeveralLines", static_cast<Handler>(&TestServer::writeOnSeveralLines)},
                           {"count", static_cast<Handler>(&TestServer::count)},
                           {"ring", static_cast<Handler>(&TestServer::ring)},
                           {"hold", static_cast<Handler>(&TestServer::hold)},
                           {"waitForItself", static_cast<Handler>(&TestServer::waitForItself)},
                           {"throwRuntimeError", static_cast<Handler>(&TestServer::throwRuntimeError)},
                           {"throwNumber", static_cast<Handler>(&TestServer::throwNumber)}};
    description = {.methods = METHODS, .notifications = NOTIFICATIONS};
}

TestServer::~TestServer()
{
    release.put(true); // so that a test that failed half-way does not wait for a handler that nobody lets go
    RPCServer::shutdown();
}

std::string TestServer::echo(const IRPC::RPCSynchronousMethodObject& request)
{
    Deserializer parameters(request.getParameters());
    return IRPC::RPCResultObject(request, StringObject(deserialize<std::string>("text", parameters))).serialize();
}

std::string TestServer::repeat(const IRPC::RPCSynchronousMethodObject& request)
{
    Deserializer parameters(request.getParameters());
    const auto text = deserialize<std::string>("text", parameters);
    std::string whole;
    for (auto times = deserialize<unsigned int>("times", parameters); times > 0; --times)
        whole += text;
    return IRPC::RPCResultObject(request, StringObject(whole)).serialize();
}

std::string TestServer::writeOnSeveralLines(const IRPC::RPCSynchronousMethodObject& request)
{
    return "{\n\"jsonrpc\":\"2.0\",\n\"id\":" + request.getId() + ",\n\"result\":\"a\\nb\"}\n";
}

std::string TestServer::count(const IRPC::RPCSynchronousMethodObject& request)
{
    ++counted;
    return IRPC::RPCReturnObject(request).serialize();
}

std::string TestServer::ring(const IRPC::RPCSynchronousMethodObject& request)
{
    Deserializer parameters(request.getParameters());
    notifyRing(deserialize<unsigned int>("number", parameters));
    return IRPC::RPCReturnObject(request).serialize();
}

std::string TestServer::hold(const IRPC::RPCSynchronousMethodObject& request)
{
    held.put(true);
    bool ignored{};
    release.take(ignored);
    return IRPC::RPCReturnObject(request).serialize();
}

std::string TestServer::waitForItself(const IRPC::RPCSynchronousMethodObject& request)
{
    waitForHandler();
    return IRPC::RPCReturnObject(request).serialize();
}

std::string TestServer::throwRuntimeError(const IRPC::RPCSynchronousMethodObject&)
{
    throw std::runtime_error("x");
}

std::string TestServer::throwNumber(const IRPC::RPCSynchronousMethodObject&)
{
    throw 1;
}

void TestServer::notifyRing(unsigned int number)
{
    Serializer payload;
    payload.beginObject("");
    serialize("number", number, payload);
    payload.endObject("");
    handleRPCNotification("ITest::onRing", payload.generate());
}

} // namespace Corvane::Test
