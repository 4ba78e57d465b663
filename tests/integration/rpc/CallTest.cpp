#include "ServerFixture.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <support/CapturedOutput.h>

namespace Corvane::Test
{

namespace
{

using nlohmann::json;
using RPCCall = ServerFixture;

std::string callOf(const std::string& method, const std::string& rest = "")
{
    return R"({"jsonrpc":"2.0","id":1,"method":")" + method + "\"" + rest + "}";
}

TEST_F(RPCCall, IsAnsweredWithTheResult)
{
    EXPECT_EQ(connect().call(callOf("ITest::echo", R"(,"params":{"text":"hé\n"})")),
              R"({"jsonrpc":"2.0","id":1,"result":"hé\n"})");
}

TEST_F(RPCCall, WithoutAValueIsAnsweredWithNull)
{
    EXPECT_EQ(connect().call(callOf("ITest::count")), R"({"jsonrpc":"2.0","id":1,"result":null})");
}

TEST_F(RPCCall, IsAnsweredOnOneLineHoweverItsHandlerWritesTheAnswer)
{
    RawClient client = connect();
    EXPECT_EQ(json::parse(client.call(callOf("ITest::writeOnSeveralLines"))).at("result"), "a\nb");
    EXPECT_EQ(client.call(callOf("ITest::count")), R"({"jsonrpc":"2.0","id":1,"result":null})");
}

TEST_F(RPCCall, GetsItsIdBackAsItWas)
{
    RawClient client = connect();
    for (const std::string id : {"7", "-1", "1.50", "1e3", R"("a\u0041b")", R"("")", "null", "18446744073709551615"})
        EXPECT_EQ(client.call(R"({"id": )" + id + R"( ,"method":"ITest::count","jsonrpc":"2.0"})"),
                  R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":null})");
}

TEST_F(RPCCall, WithoutIdIsCarriedOutAndNotAnswered)
{
    RawClient client = connect();
    client.send("{\"jsonrpc\":\"2.0\",\"method\":\"ITest::count\"}\n"
                "{\"jsonrpc\":\"2.0\",\"method\":\"ITest::noSuchMethod\"}\n"
                "{\"jsonrpc\":\"2.0\",\"method\":\"ITest::count\",\"params\":[1]}\n");
    EXPECT_EQ(client.call(callOf("ITest::echo", R"(,"params":{"text":"next"})")),
              R"({"jsonrpc":"2.0","id":1,"result":"next"})");
    EXPECT_EQ(server.counted, 1);
}

TEST_F(RPCCall, IsRefusedOnceTheServerHasEndedItsCallsAndSubscribersAreStillTold)
{
    RawClient client = connect();
    server.endCalls();

    EXPECT_EQ(client.call(callOf("ITest::count")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"the server takes no calls any more"}})");
    client.send("{\"jsonrpc\":\"2.0\",\"method\":\"ITest::count\"}\n");
    EXPECT_EQ(client.call(callOf("rpc.subscribe", R"(,"params":{"notifications":["*"]})")),
              R"({"jsonrpc":"2.0","id":1,"result":null})");
    server.notifyRing(1);
    EXPECT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","method":"ITest::onRing","params":{"number":1}})");
    EXPECT_EQ(server.counted, 0);
}

TEST_F(RPCCall, ToAnUnknownInterfaceOrMethodIsAnError)
{
    RawClient client = connect();
    EXPECT_EQ(client.call(callOf("INone::echo")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32601,"message":"unknown interface"}})");
    for (const std::string method :
         {"ITest::none", "ITest::", "echo", "", "rpc.none", "::", "::echo", "::rpc.subscribe", "::rpc.discover"})
        EXPECT_EQ(client.call(callOf(method)),
                  R"({"jsonrpc":"2.0","id":1,"error":{"code":-32601,"message":"unknown method"}})")
            << method;
}

TEST_F(RPCCall, ThatThrowsIsAnErrorWithTheExceptionsText)
{
    RawClient client = connect();
    EXPECT_EQ(client.call(callOf("ITest::throwRuntimeError")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"x"}})");
    EXPECT_EQ(client.call(callOf("ITest::throwNumber")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"unknown"}})");
    EXPECT_EQ(client.call(callOf("ITest::echo")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"text: missing"}})");
}

TEST(RPCDispatch, OfADerivedClassThatThrowsIsAnError)
{
    struct Derived : TestServer {
        std::string handleRPCSynchronousMethod(const IRPC::RPCSynchronousMethodObject&) override { throw 1; }
    } server;
    EXPECT_EQ(server.handleRPCSynchronousMethodPayload(callOf("ITest::count")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"unknown"}})");
}

TEST_F(RPCCall, TextThatIsNoJsonIsAnsweredAndTheConnectionLivesOn)
{
    RawClient client = connect();
    for (const std::string text : {"{", "x", "{} {}", "{\"jsonrpc\":\"2.0\",\"method\":\"\xff\"}", "[1,", "\x01"}) {
        const json answer = json::parse(client.call(text));
        EXPECT_EQ(answer["error"]["code"], -32700) << text;
        EXPECT_TRUE(answer["id"].is_null()) << text;
    }
    EXPECT_EQ(json::parse(client.call(callOf("ITest::count")))["result"], nullptr);
}

TEST_F(RPCCall, JsonThatIsNoCallIsAnInvalidRequest)
{
    RawClient client = connect();
    for (const std::string text : {"1", "\"x\"", "null", "{}", R"({"jsonrpc":"2.0","id":1})",
                                   R"({"jsonrpc":"1.0","id":1,"method":"ITest::count"})",
                                   R"({"id":1,"method":"ITest::count"})", R"({"jsonrpc":"2.0","id":1,"method":5})",
                                   R"({"jsonrpc":"2.0","id":{},"method":"ITest::count"})", "[]", "[1]"}) {
        const std::string answer = client.call(text);
        EXPECT_THAT(answer, testing::HasSubstr("-32600")) << text;
    }
    EXPECT_EQ(server.counted, 0);
}

TEST_F(RPCCall, WithParametersThatAreNoObjectIsRefused)
{
    EXPECT_EQ(connect().call(callOf("ITest::count", R"(,"params":[1])")),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32602,"message":"params: expected an object"}})");
    EXPECT_EQ(server.counted, 0);
}

TEST_F(RPCCall, ThatIsFaultyIsAnsweredTheSameInWhateverOrderItsMembersStand)
{
    RawClient client = connect();
    std::vector<std::string> members = {R"("id":{})", R"("jsonrpc":"2.0")", R"("method":"ITest::echo")",
                                        R"("params":[1])"};
    do {
        const std::string call = "{" + members[0] + "," + members[1] + "," + members[2] + "," + members[3] + "}";
        EXPECT_EQ(client.call(call), R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,)"
                                     R"("message":"id: expected a number or a string"}})")
            << call;
    } while (std::next_permutation(members.begin(), members.end()));
}

TEST_F(RPCCall, TakesTheLastOfSeveralMembersOfOneName)
{
    RawClient client = connect();
    const std::string echo = R"({"jsonrpc":"2.0","method":"ITest::echo","id":1,"params":{"text":"first","text":"a"})";
    const std::string result = R"({"jsonrpc":"2.0","id":1,"result":"a"})";
    EXPECT_EQ(
        client.call(R"({"id":{},"id":7,"params":[1],"params":5,"jsonrpc":"1.0","method":5,)" + echo.substr(1) + "}"),
        result);
    EXPECT_EQ(json::parse(client.call(echo + R"(,"params":{"text":"b"}})"))["result"], "b");
    EXPECT_EQ(json::parse(client.call(echo + R"(,"params":[1]})"))["error"]["code"], -32602);
    EXPECT_EQ(client.call(echo + R"(,"id":"x"})"), R"({"jsonrpc":"2.0","id":"x","result":"a"})");
    for (const std::string last : {R"("id":{})", R"("jsonrpc":2)", R"("method":null)"})
        EXPECT_EQ(json::parse(client.call(echo + "," + last + "}"))["error"]["code"], -32600) << last;
}

TEST_F(RPCCall, WithANumberThatCannotBeRepresentedIsAnsweredWithItsIdWhereItHasOne)
{
    RawClient client = connect();
    const auto answerTo = [](const std::string& id) {
        return R"({"jsonrpc":"2.0","id":)" + id +
               R"(,"error":{"code":-32700,"message":"a number is malformed or cannot be represented"}})";
    };
    for (const std::string id : {"7", R"("a\"}b")", "18446744073709551616", "-9223372036854775809", "1.5", "null"}) {
        EXPECT_EQ(client.call(R"({"id": )" + id + R"( ,"params":{"id":9,"x":[1e400]},"method":"x"})"), answerTo(id));
        EXPECT_EQ(client.call(R"( {"params":{"x":{"id":9}},"x":-1e400,"id":[],"id":)" + id + "}"), answerTo(id));
    }
    for (const std::string call :
         {R"({"id":1e400})", R"({"id":018})", R"({"id":-,"x":1e400})", R"({"x":1e400})", R"({"id":{"a":1e400}})",
          R"({"id":[1],"x":1e400})", R"([{"id":1,"x":1e400}])", R"({"x":1e400,"id":"\x"})", "1e400"})
        EXPECT_EQ(client.call(call), answerTo("null")) << call;
}

TEST_F(RPCCall, BatchIsAnsweredInOneMessageWithoutThoseThatWantNoAnswer)
{
    const json answer = json::parse(connect().call(
        R"([{"jsonrpc":"2.0","id":1,"method":"ITest::count"},{"jsonrpc":"2.0","method":"ITest::count"},5,)"
        R"({"jsonrpc":"2.0","id":"b","method":"ITest::echo","params":{"text":"]"}}])"));
    ASSERT_EQ(answer.size(), 3U);
    EXPECT_EQ(answer[0], json::parse(R"({"jsonrpc":"2.0","id":1,"result":null})"));
    EXPECT_EQ(answer[1]["error"]["code"], -32600);
    EXPECT_EQ(answer[2], json::parse(R"({"jsonrpc":"2.0","id":"b","result":"]"})"));
    EXPECT_EQ(server.counted, 2);
}

TEST_F(RPCCall, BatchThatWantsNoAnswersGetsNone)
{
    RawClient client = connect();
    client.send("[{\"jsonrpc\":\"2.0\",\"method\":\"ITest::count\"}]\n");
    EXPECT_EQ(client.call(callOf("ITest::echo", R"(,"params":{"text":"next"})")),
              R"({"jsonrpc":"2.0","id":1,"result":"next"})");
}

TEST_F(RPCCall, MessagesMayComeInPiecesAndSeveralAtOnce)
{
    RawClient client = connect();
    const std::string message = callOf("ITest::count") + "\r\n";
    for (char c : message)
        client.send({&c, 1});
    EXPECT_TRUE(client.receiveLine().has_value());
    client.send(message + "\n \n" + message + message.substr(0, 10));
    EXPECT_TRUE(client.receiveLine().has_value());
    EXPECT_TRUE(client.receiveLine().has_value());
    client.send(message.substr(10));
    EXPECT_TRUE(client.receiveLine().has_value());
    EXPECT_EQ(server.counted, 4);
}

TEST_F(RPCCall, ClientThatEndsItsInputStillGetsItsAnswers)
{
    RawClient client = connect();
    client.send(callOf("ITest::count") + "\n");
    client.endInput();
    EXPECT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","id":1,"result":null})");
    EXPECT_TRUE(client.awaitEnd());
}

TEST_F(RPCCall, TextInALastLineWithoutEndIsDroppedWithALineInTheLog)
{
    CapturedOutput log;
    RawClient client = connect();
    client.send(callOf("ITest::count") + "\n" + callOf("ITest::count"));
    client.endInput();
    EXPECT_TRUE(client.awaitEnd());
    EXPECT_EQ(server.counted, 1);
    ASSERT_EQ(log.getMessages().size(), 1U);
    EXPECT_THAT(log.getMessages()[0], testing::HasSubstr("its last message has no end and is dropped"));
}

TEST_F(RPCCall, DiscoverDescribesMethodsAndNotifications)
{
    const json document = json::parse(connect().call(callOf("rpc.discover")))["result"];
    EXPECT_EQ(document["openrpc"], "1.2.6");
    EXPECT_EQ(document["info"]["title"], "TEST");
    ASSERT_EQ(document["methods"].size(), 9U);
    const json echo = document["methods"][1];
    EXPECT_EQ(echo["name"], "ITest::echo");
    EXPECT_EQ(echo["summary"], "Gives a text back");
    EXPECT_EQ(echo["params"], json::parse(R"([{"name":"text","required":true,"schema":{"type":"string"}}])"));
    EXPECT_EQ(echo["result"]["schema"], json::parse(R"({"type":"string"})"));
    EXPECT_EQ(document["methods"][0]["name"], "ITest::count");
    EXPECT_EQ(document["x-notifications"][0]["name"], "ITest::onRing");
}

TEST_F(RPCCall, PayloadIsHandledAsIfAClientHadSentIt)
{
    EXPECT_EQ(server.handleRPCSynchronousMethodPayload(callOf("ITest::count")),
              R"({"jsonrpc":"2.0","id":1,"result":null})");
    EXPECT_EQ(server.handleRPCSynchronousMethodPayload(R"({"jsonrpc":"2.0","method":"ITest::count"})"), "");
    const json tooDeep =
        json::parse(server.handleRPCSynchronousMethodPayload(std::string(70, '[') + std::string(70, ']')));
    EXPECT_EQ(tooDeep["error"]["code"], -32700);
    EXPECT_EQ(server.counted, 2);
}

TEST_F(RPCCall, ShutdownWaitsForTheHandlerThatRuns)
{
    RawClient client = connect();
    client.send(callOf("ITest::hold") + "\n");
    bool ignored{};
    ASSERT_TRUE(server.held.take(ignored));
    std::atomic<bool> down{false};
    std::jthread stopper([&] {
        server.shutdown();
        down = true;
    });
    EXPECT_FALSE(down);
    server.release.put(true);
    stopper.join();
    EXPECT_TRUE(client.awaitEnd());
    EXPECT_THROW(connect(), std::runtime_error);
}

TEST_F(RPCCall, HandlerDoesNotWaitForItself)
{
    EXPECT_EQ(connect().call(callOf("ITest::waitForItself")), R"({"jsonrpc":"2.0","id":1,"result":null})");
}

TEST_F(RPCCall, ServerComesUpAgainAfterAShutdown)
{
    server.shutdown();
    server.shutdown();
    server.init();
    server.init();
    EXPECT_EQ(connect().call(callOf("ITest::count")), R"({"jsonrpc":"2.0","id":1,"result":null})");
}

} // namespace

} // namespace Corvane::Test
