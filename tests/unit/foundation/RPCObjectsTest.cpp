#include "ProblemOf.h"
#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/foundation/ValueObjects.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/writer.h>

namespace Corvane::IRPC::Test
{

namespace
{

using nlohmann::json;

const RPCSynchronousMethodObject REQUEST("IWindow", "setOpacity", "{\"opacity\":128}", "17");

} // namespace

TEST(RPCObjects, ACallGivesBackWhatItWasMadeOf)
{
    EXPECT_EQ(REQUEST.getInterface(), "IWindow");
    EXPECT_EQ(REQUEST.getMethod(), "setOpacity");
    EXPECT_EQ(REQUEST.getParameters(), "{\"opacity\":128}");
    EXPECT_EQ(REQUEST.getId(), "17");
}

TEST(RPCObjects, ACallIsWrittenWithItsIdAndItsParameters)
{
    EXPECT_EQ(REQUEST.serialize(),
              R"({"jsonrpc":"2.0","id":17,"method":"IWindow::setOpacity","params":{"opacity":128}})");
    EXPECT_EQ(RPCSynchronousMethodObject("IWindow", "isFocused", "{}", "\"a\\u0031\"").serialize(),
              R"({"jsonrpc":"2.0","id":"a\u0031","method":"IWindow::isFocused","params":{}})");
}

TEST(RPCObjects, ACallThatNobodyWaitsForHasNoId)
{
    EXPECT_EQ(RPCAsynchronousMethodObject("IApplication", "activate", "{}").serialize(),
              R"({"jsonrpc":"2.0","method":"IApplication::activate","params":{}})");
    EXPECT_EQ(RPCMethodObject("IApplication", "activate", "{}").serialize(),
              R"({"jsonrpc":"2.0","method":"IApplication::activate","params":{}})");
}

TEST(RPCObjects, AMethodOfNoInterfaceIsWrittenAlone)
{
    EXPECT_EQ(RPCSynchronousMethodObject("", "rpc.discover", "{}", "1").serialize(),
              R"({"jsonrpc":"2.0","id":1,"method":"rpc.discover","params":{}})");
}

TEST(RPCObjects, AReturnAnswersItsCallWithNull)
{
    EXPECT_EQ(RPCReturnObject(REQUEST).serialize(), R"({"jsonrpc":"2.0","id":17,"result":null})");
}

TEST(RPCObjects, AResultAnswersItsCallWithTheValue)
{
    EXPECT_EQ(RPCResultObject(REQUEST, UInt32Object(255)).serialize(), R"({"jsonrpc":"2.0","id":17,"result":255})");
    EXPECT_EQ(RPCResultObject(REQUEST, StringObject(std::string("RUNNING"))).serialize(),
              R"({"jsonrpc":"2.0","id":17,"result":"RUNNING"})");
    EXPECT_EQ(RPCResultObject(REQUEST, ISurfaceCompositing::Rect(-1, 2, 3, 4)).serialize(),
              R"({"jsonrpc":"2.0","id":17,"result":{"x":-1,"y":2,"width":3,"height":4}})");
}

TEST(RPCObjects, AResultOutlivesItsValueAndItsCall)
{
    std::unique_ptr<RPCResultObject> result;
    {
        const RPCSynchronousMethodObject request("I", "m", "{}", "\"id\"");
        const StringObject value(std::string("gone"));
        result = std::make_unique<RPCResultObject>(request, value);
    }
    EXPECT_EQ(result->serialize(), R"({"jsonrpc":"2.0","id":"id","result":"gone"})");
}

TEST(RPCObjects, AnErrorAnswersItsCallWithCodeAndMessage)
{
    EXPECT_EQ(RPCErrorObject(REQUEST, "invalid \"proxy\"").serialize(),
              R"({"jsonrpc":"2.0","id":17,"error":{"code":-32000,"message":"invalid \"proxy\""}})");
    EXPECT_EQ(RPCErrorObject(REQUEST, "unknown method", RPCErrorObject::METHOD_NOT_FOUND).serialize(),
              R"({"jsonrpc":"2.0","id":17,"error":{"code":-32601,"message":"unknown method"}})");
    EXPECT_EQ(RPCErrorObject(std::string("null"), "not valid JSON", RPCErrorObject::PARSE_ERROR).serialize(),
              R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"not valid JSON"}})");
}

TEST(RPCObjects, AnErrorMessageOfBrokenBytesIsStillValidJson)
{
    const json reply = json::parse(RPCErrorObject(REQUEST, "bad: \xFF\x01").serialize());

    EXPECT_EQ(reply["error"]["message"], "bad: \xEF\xBF\xBD\x01");
}

TEST(RPCObjects, TheCodesAreThoseOfTheProtocol)
{
    EXPECT_EQ(RPCErrorObject::CALL_FAILED, -32000);
    EXPECT_EQ(RPCErrorObject::INVALID_REQUEST, -32600);
    EXPECT_EQ(RPCErrorObject::METHOD_NOT_FOUND, -32601);
    EXPECT_EQ(RPCErrorObject::INVALID_PARAMETERS, -32602);
    EXPECT_EQ(RPCErrorObject::PARSE_ERROR, -32700);
}

TEST(RPCObjects, ANotificationIsWrittenWithoutAnId)
{
    const RPCNotificationObject notification("IWindow::onOpacityChange", R"({"uid":"7","oldOpacity":1})");

    EXPECT_EQ(notification.getName(), "IWindow::onOpacityChange");
    EXPECT_EQ(notification.getPayload(), R"({"uid":"7","oldOpacity":1})");
    EXPECT_EQ(notification.serialize(),
              R"({"jsonrpc":"2.0","method":"IWindow::onOpacityChange","params":{"uid":"7","oldOpacity":1}})");
}

/// @return what an object writes where it is one of several values of a text
std::string writePlain(const SerialObject& object)
{
    Serializer serializer;
    object.serialize(std::string(), serializer);
    return serializer.generate();
}

TEST(RPCObjects, ThatAnswerAreTheSameTextHoweverTheyAreWritten)
{
    const std::string id = R"("an id that is longer than any string keeps in itself")";
    const RPCSynchronousMethodObject request("IWindow", "getTitle", "{}", id);
    const RPCResultObject result(request, StringObject(std::string("\"quoted\"\n")));

    EXPECT_EQ(RPCReturnObject(request).serialize(), writePlain(RPCReturnObject(request)));
    EXPECT_EQ(result.serialize(), writePlain(result));
    EXPECT_EQ(result.serialize(), R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":"\"quoted\"\n"})");
}

TEST(RPCObjects, AreClonedWithTheirKind)
{
    const RPCAsynchronousMethodObject call("I", "m", "{}");
    const RPCNotificationObject notification("I::n", "{}");
    const RPCMethodObject* const objects[] = {&REQUEST, &call};

    for (const RPCMethodObject* object : objects) {
        EXPECT_EQ(object->clone()->serialize(), object->serialize());
        EXPECT_EQ(object->clone()->getObjectType(), object->getObjectType());
    }
    EXPECT_EQ(notification.clone()->serialize(), notification.serialize());
    EXPECT_EQ(RPCReturnObject(REQUEST).clone()->serialize(), RPCReturnObject(REQUEST).serialize());
    EXPECT_EQ(RPCErrorObject(REQUEST, "e").clone()->serialize(), RPCErrorObject(REQUEST, "e").serialize());
    const RPCResultObject result(REQUEST, BooleanObject(true));
    EXPECT_EQ(result.clone()->serialize(), result.serialize());
}

TEST(RPCObjects, NameTheirTypes)
{
    EXPECT_EQ(RPCMethodObject("I", "m", "{}").getObjectType(), "RPCMethodObject");
    EXPECT_EQ(RPCAsynchronousMethodObject("I", "m", "{}").getObjectType(), "RPCAsynchronousMethodObject");
    EXPECT_EQ(REQUEST.getObjectType(), "RPCSynchronousMethodObject");
    EXPECT_EQ(RPCReturnObject(REQUEST).getObjectType(), "RPCReturnObject");
    EXPECT_EQ(RPCResultObject(REQUEST, REQUEST).getObjectType(), "RPCResultObject");
    EXPECT_EQ(RPCErrorObject(REQUEST, "").getObjectType(), "RPCErrorObject");
    EXPECT_EQ(RPCNotificationObject("", "{}").getObjectType(), "RPCNotificationObject");
}

TEST(RPCObjects, AreWrittenThroughAJsoncppWriter)
{
    Json::FastWriter writer;
    const RPCNotificationObject twice("I::n", R"({"a":1,"a":2})");
    EXPECT_EQ(twice.serialize(writer), "{\"jsonrpc\":\"2.0\",\"method\":\"I::n\",\"params\":{\"a\":2}}\n");

    const RPCNotificationObject broken("I::n", "{");
    EXPECT_NE(Corvane::Test::problemOf([&] { broken.serialize(writer); }).find("not valid JSON"), std::string::npos);
}

} // namespace Corvane::IRPC::Test
