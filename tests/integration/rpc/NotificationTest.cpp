#include "ServerFixture.h"

namespace Corvane::Test
{

namespace
{

using RPCNotification = ServerFixture;

void subscribe(RawClient& client, const std::string& patterns)
{
    EXPECT_EQ(
        client.call(R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":)" + patterns + "}}"),
        R"({"jsonrpc":"2.0","id":1,"result":null})");
}

std::string ringOf(unsigned int number)
{
    return R"({"jsonrpc":"2.0","method":"ITest::onRing","params":{"number":)" + std::to_string(number) + "}}";
}

TEST_F(RPCNotification, ReachesWhoSubscribedByNameByInterfaceOrToAll)
{
    for (const std::string pattern : {"ITest::onRing", "ITest::*", "*"}) {
        RawClient client = connect();
        subscribe(client, "[\"" + pattern + "\"]");
        server.notifyRing(1);
        EXPECT_EQ(client.receiveLine(), ringOf(1)) << pattern;
    }
}

TEST_F(RPCNotification, DoesNotReachOthers)
{
    RawClient other = connect();
    subscribe(other, R"(["ITest::onRin","ITes::*","ITest::onRingMore","IOther::*","onRing"])");
    server.notifyRing(1);
    EXPECT_EQ(other.call(R"({"jsonrpc":"2.0","id":2,"method":"ITest::count"})"),
              R"({"jsonrpc":"2.0","id":2,"result":null})");
}

TEST_F(RPCNotification, ComesOnceHoweverManyPatternsMatch)
{
    RawClient client = connect();
    subscribe(client, R"(["*","ITest::*","ITest::onRing"])");
    subscribe(client, R"(["*"])");
    server.notifyRing(1);
    server.notifyRing(2);
    EXPECT_EQ(client.receiveLine(), ringOf(1));
    EXPECT_EQ(client.receiveLine(), ringOf(2));
}

TEST_F(RPCNotification, ArrivesWholeWhateverItsLength)
{
    RawClient client = connect();
    subscribe(client, R"(["*"])");
    const std::string around = R"({"jsonrpc":"2.0","method":"ITest::onText","params":""})";
    constexpr std::size_t SENT_AS_ONE_PIECE = 1024;
    for (const std::size_t size :
         {SENT_AS_ONE_PIECE - 1, SENT_AS_ONE_PIECE, SENT_AS_ONE_PIECE + 1, 20 * SENT_AS_ONE_PIECE}) {
        const std::string payload = '"' + std::string(size - around.size() - 1, 'x') + '"';
        server.handleRPCNotification("ITest::onText", payload);
        EXPECT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","method":"ITest::onText","params":)" + payload + '}');
    }
}

TEST_F(RPCNotification, IsForTheLastOfSeveralListsOfPatterns)
{
    RawClient client = connect();
    subscribe(client, R"(5,"notifications":["ITest::onOther"],"notifications":["ITest::onRing"])");
    server.handleRPCNotification("ITest::onOther", "1");
    server.notifyRing(1);
    EXPECT_EQ(client.receiveLine(), ringOf(1));
}

TEST_F(RPCNotification, EndsWithTheUnsubscription)
{
    RawClient client = connect();
    subscribe(client, R"(["ITest::onRing"])");
    EXPECT_EQ(
        client.call(
            R"({"jsonrpc":"2.0","id":2,"method":"rpc.unsubscribe","params":{"notifications":["ITest::onRing"]}})"),
        R"({"jsonrpc":"2.0","id":2,"result":null})");
    server.notifyRing(1);
    EXPECT_EQ(client.call(R"({"jsonrpc":"2.0","id":3,"method":"ITest::count"})"),
              R"({"jsonrpc":"2.0","id":3,"result":null})");
}

TEST_F(RPCNotification, BadSubscriptionIsRefused)
{
    RawClient client = connect();
    for (const std::string parameters : {"{}", R"({"notifications":"*"})", R"({"notifications":[1]})"})
        EXPECT_EQ(
            client.call(R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":)" + parameters + "}"),
            R"({"jsonrpc":"2.0","id":1,"error":{"code":-32602,"message":"notifications: expected an array of strings"}})");
}

TEST_F(RPCNotification, EverythingAfterTheSubscriptionArrivesInOrder)
{
    constexpr unsigned int COUNT = 10'000;
    RawClient client = connect();
    subscribe(client, R"(["*"])");
    std::jthread ringer([this] {
        for (unsigned int i = 0; i < COUNT; ++i)
            server.notifyRing(i);
    });
    for (unsigned int i = 0; i < COUNT; ++i)
        ASSERT_EQ(client.receiveLine(), ringOf(i));
    ringer.join();
}

TEST_F(RPCNotification, LargeOnesReachASlowReaderWholeAndInOrder)
{
    // Each is larger than what a socket takes at once, so that the rest of each waits in the server.
    RawClient client = connect();
    subscribe(client, R"(["*"])");
    const auto payload = [](int i) { return "\"" + std::string(100'000, static_cast<char>('a' + i)) + "\""; };
    for (int i = 0; i < 8; ++i)
        server.handleRPCNotification("ITest::onText", payload(i));
    for (int i = 0; i < 8; ++i)
        ASSERT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","method":"ITest::onText","params":)" + payload(i) + "}");
}

TEST_F(RPCNotification, OfAHandlerComesBeforeItsAnswer)
{
    RawClient client = connect();
    subscribe(client, R"(["*"])");
    EXPECT_EQ(client.call(R"({"jsonrpc":"2.0","id":1,"method":"ITest::ring","params":{"number":5}})"), ringOf(5));
    EXPECT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","id":1,"result":null})");
}

TEST_F(RPCNotification, GoesOutWhileAHandlerRuns)
{
    RawClient subscriber = connect();
    subscribe(subscriber, R"(["*"])");
    RawClient caller = connect();
    caller.send("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"ITest::hold\"}\n");
    bool ignored{};
    ASSERT_TRUE(server.held.take(ignored));
    server.notifyRing(9);
    EXPECT_EQ(subscriber.receiveLine(), ringOf(9));
    server.release.put(true);
    EXPECT_TRUE(caller.receiveLine().has_value());
}

TEST_F(RPCNotification, OfManyThreadsAtOnceStaysWhole)
{
    constexpr unsigned int THREADS = 4;
    constexpr unsigned int COUNT = 2'000;
    RawClient client = connect();
    subscribe(client, R"(["*"])");
    std::vector<std::jthread> ringers;
    for (unsigned int t = 0; t < THREADS; ++t)
        ringers.emplace_back([this, t] {
            for (unsigned int i = 0; i < COUNT; ++i)
                server.notifyRing(t * COUNT + i);
        });
    std::vector<unsigned int> next(THREADS);
    for (unsigned int i = 0; i < THREADS * COUNT; ++i) {
        const std::string line = client.receiveLine().value_or("");
        const auto number = static_cast<unsigned int>(std::stoul(line.substr(line.rfind(':') + 1)));
        ASSERT_EQ(line, ringOf(number));
        ASSERT_EQ(number % COUNT, next[number / COUNT]++) << "out of order";
    }
    for (std::jthread& ringer : ringers)
        ringer.join();
}

/// Keeps what a server announces inside its own process.
class KeepingListener : public IRPC::IRPCListener
{
public:
    void handleRPCNotification(const IRPC::RPCNotificationObject& notification) override
    {
        kept.push_back(notification.serialize());
    }
    std::vector<std::string> kept;
};

TEST_F(RPCNotification, ReachesListenersInTheProcess)
{
    KeepingListener listener;
    server.addListener(&listener);
    server.addListener(&listener);
    server.addListener(nullptr);
    server.notifyRing(1);
    server.removeListener(&listener);
    server.notifyRing(2);
    EXPECT_EQ(listener.kept, std::vector<std::string>{ringOf(1)});
}

TEST_F(RPCNotification, ReachesTheListenersThatStayWhenAnotherGoes)
{
    KeepingListener going;
    KeepingListener staying;
    server.addListener(&going);
    server.addListener(&staying);
    server.removeListener(&going);
    server.notifyRing(1);
    EXPECT_EQ(going.kept, std::vector<std::string>());
    EXPECT_EQ(staying.kept, std::vector<std::string>{ringOf(1)});
}

} // namespace

} // namespace Corvane::Test
