#include "MemoryShortage.h"
#include "ServerFixture.h"

#include <support/CapturedOutput.h>

/// A server whose process has no memory left, at every place where it asks for some.
namespace Corvane::Test
{

namespace
{

constexpr char COUNT[] = R"({"jsonrpc":"2.0","id":1,"method":"ITest::count"})";
constexpr char SUCCESS[] = R"({"jsonrpc":"2.0","id":1,"result":null})";

std::string callOf(const std::string& method, const std::string& parameters)
{
    return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + parameters + "}";
}

struct Scenario {
    const char* name;
    std::string message;
    bool isLong = false; ///< the server has to keep part of what it receives or sends, or loses the connection
};

std::vector<Scenario> scenarios()
{
    const std::string longText = R"({"text":")" + std::string(100'000, 'x') + "\"}";
    const std::string failing = callOf("ITest::throwRuntimeError", "{}");
    const std::string discovery = callOf("rpc.discover", "{}");
    return {{"Call", COUNT},
            {"LongCall", callOf("ITest::echo", longText), true},
            {"LongAnswer", callOf("ITest::repeat", R"({"text":"0123456789","times":100000})"), true},
            {"Failure", failing},
            {"UnknownMethod", callOf("ITest::noSuchMethodWithALongName", "{}")},
            {"NoCall", "[]"},
            {"NoJson", "{"},
            {"TooDeep", std::string(100, '[')},
            {"BadNumber", callOf("ITest::echo", R"({"text":1e400})")},
            {"Discovery", discovery},
            {"Subscription", callOf("rpc.subscribe", R"({"notifications":["ITest::onRing","ITest::onOther"]})")},
            {"Batch", "[" + failing + "," + discovery + "," + std::string(COUNT) + "]"}};
}

class RPCMemory : public ServerFixture, public testing::WithParamInterface<Scenario>
{
protected:
    /// Sends the message, and then a call, while the memory of the server's thread is short from its allocation number
    /// `first` on. @return whether it asked for so much at all
    bool tryWith(MemoryShortage::Kind kind, unsigned long first)
    {
        CapturedOutput log;
        bool hit = false;
        std::string answer;
        {
            const MemoryShortage::Sparing spared; // the test itself
            std::optional<RawClient> client;
            // Before that, a client cannot even be told why it is turned away.
            if (kind == MemoryShortage::ONCE) {
                EXPECT_EQ(client.emplace(connect()).call(COUNT), SUCCESS);
            }
            const MemoryShortage shortage(kind, first);
            if (!client)
                client.emplace(connect());
            answer = client->call(GetParam().message);
            client->call(COUNT);
            hit = shortage.wasHit();
        }
        expectAnswerOrEnd(answer, log);
        EXPECT_TRUE(isAnswered(answer) || kind != MemoryShortage::ONCE || GetParam().isLong);
        EXPECT_EQ(connect().call(COUNT), SUCCESS);
        return hit;
    }

    static bool isAnswered(const std::string& answer) { return answer != "no answer"; }

    static void expectAnswerOrEnd(const std::string& answer, const CapturedOutput& log)
    {
        if (isAnswered(answer)) {
            EXPECT_THAT(answer, testing::HasSubstr(R"("jsonrpc":"2.0")"));
            return;
        }
        EXPECT_TRUE(await([&] { return !log.getMessages().empty(); }));
        EXPECT_EQ(log.getMessages().size(), 1U) << log.getText();
    }

    void tryEverywhere(MemoryShortage::Kind kind)
    {
        unsigned long first = 0;
        for (bool hit = true; hit && !HasFailure(); ++first) {
            SCOPED_TRACE("allocation " + std::to_string(first));
            hit = tryWith(kind, first);
        }
        EXPECT_GT(first, 1U);
    }
};

TEST_P(RPCMemory, MayFailOnceAnywhere)
{
    tryEverywhere(MemoryShortage::ONCE);
}

TEST_P(RPCMemory, MayEndAnywhere)
{
    tryEverywhere(MemoryShortage::FROM_THEN_ON);
}

INSTANTIATE_TEST_SUITE_P(Of, RPCMemory, testing::ValuesIn(scenarios()),
                         [](const auto& info) { return std::string(info.param.name); });

using RPCNotificationMemory = ServerFixture;

TEST_F(RPCNotificationMemory, ThatIsShortCostsTheSubscriberThatDoesNotReadAndNobodyElse)
{
    const std::string subscription = callOf("rpc.subscribe", R"({"notifications":["*"]})");
    RawClient idle = connect();
    RawClient reader = connect();
    ASSERT_EQ(idle.call(subscription), SUCCESS);
    ASSERT_EQ(reader.call(subscription), SUCCESS);
    const std::string name = "ITest::onText";
    const std::string payload = "\"" + std::string(100'000, 'x') + "\"";
    CapturedOutput log;
    {
        const MemoryShortage shortage(MemoryShortage::FROM_THEN_ON, 0);
        while (!shortage.wasHit()) {
            EXPECT_NO_THROW(server.handleRPCNotification(name, payload));
            const MemoryShortage::Sparing spared;
            ASSERT_TRUE(reader.receiveLine().has_value());
        }
    }
    EXPECT_TRUE(idle.awaitEnd());
    ASSERT_TRUE(await([&] { return !log.getMessages().empty(); }));
    EXPECT_THAT(log.getMessages()[0], testing::HasSubstr("no memory"));
    EXPECT_EQ(reader.call(subscription), SUCCESS);
}

} // namespace

} // namespace Corvane::Test
