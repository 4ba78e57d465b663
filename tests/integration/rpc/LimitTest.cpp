#include "ServerFixture.h"

#include <fcntl.h>
#include <support/CapturedOutput.h>
#include <sys/resource.h>

namespace Corvane::Test
{

namespace
{

constexpr char COUNT_CALL[] = R"({"jsonrpc":"2.0","id":1,"method":"ITest::count"})";
constexpr char COUNT_ANSWER[] = R"({"jsonrpc":"2.0","id":1,"result":null})";

using RPCLimit = ServerFixture;

TEST_F(RPCLimit, MessageOfOneMebibyteIsHandled)
{
    const std::string head = R"({"jsonrpc":"2.0","id":1,"method":"ITest::echo","params":{"text":")";
    const std::string text(1024 * 1024 - head.size() - 3, 'x');
    EXPECT_EQ(connect().call(head + text + "\"}}"), R"({"jsonrpc":"2.0","id":1,"result":")" + text + "\"}");
}

TEST_F(RPCLimit, LongerMessageIsRefusedAndOnlyItsConnectionClosed)
{
    CapturedOutput log;
    RawClient other = connect();
    RawClient client = connect();
    client.send(std::string(1024 * 1024 + 1, ' '));
    EXPECT_EQ(client.receiveLine(), R"({"jsonrpc":"2.0","id":null,"error":{"code":-32600,)"
                                    R"("message":"the message is longer than 1048576 bytes"}})");
    EXPECT_TRUE(client.awaitEnd());
    EXPECT_EQ(other.call(COUNT_CALL), COUNT_ANSWER);
    EXPECT_EQ(log.getMessages().size(), 1U);
}

TEST_F(RPCLimit, DeeperNestingIsRefusedAndOnlyItsConnectionClosed)
{
    CapturedOutput log;
    RawClient client = connect();
    RawClient other = connect();
    EXPECT_EQ(client.call(std::string(100'000, '[') + std::string(100'000, ']')),
              R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,)"
              R"("message":"nested deeper than 64 levels"}})");
    EXPECT_TRUE(client.awaitEnd());
    EXPECT_EQ(other.call(COUNT_CALL), COUNT_ANSWER);
    EXPECT_EQ(log.getMessages().size(), 1U);
}

TEST(RPCConnectionLimit, FurtherClientsAreTurnedAwayUntilOneLeaves)
{
    TemporaryRuntime runtime;
    CapturedOutput log;
    TestServer server;
    server.setConnectionLimit(2);
    server.init();
    RawClient first(server.getFixedRPCAddress());
    auto second = std::make_unique<RawClient>(server.getFixedRPCAddress());
    EXPECT_EQ(first.call(COUNT_CALL), COUNT_ANSWER);
    EXPECT_EQ(second->call(COUNT_CALL), COUNT_ANSWER);
    RawClient third(server.getFixedRPCAddress());
    EXPECT_EQ(third.receiveLine(),
              R"({"jsonrpc":"2.0","id":null,"error":{"code":-32000,"message":"too many connections"}})");
    EXPECT_TRUE(third.awaitEnd());
    EXPECT_EQ(log.getMessages().size(), 1U);
    second.reset();
    EXPECT_TRUE(await([&] { return RawClient(server.getFixedRPCAddress()).call(COUNT_CALL) == COUNT_ANSWER; }));
    EXPECT_EQ(first.call(COUNT_CALL), COUNT_ANSWER);
}

TEST_F(RPCLimit, SixtyFourClientsAreServed)
{
    std::vector<RawClient> clients;
    for (int i = 0; i < 64; ++i)
        clients.push_back(connect());
    for (RawClient& client : clients)
        EXPECT_EQ(client.call(COUNT_CALL), COUNT_ANSWER);
}

TEST_F(RPCLimit, SubscriberThatDoesNotReadIsDroppedAloneAndTheServerWaitsForNobody)
{
    CapturedOutput log;
    const std::string subscription =
        R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":["*"]}})";
    RawClient idle = connect();
    RawClient reader = connect();
    EXPECT_EQ(idle.call(subscription), COUNT_ANSWER);
    EXPECT_EQ(reader.call(subscription), COUNT_ANSWER);
    const std::string payload = "\"" + std::string(100'000, 'x') + "\"";
    for (int i = 0; i < 30; ++i) {
        server.handleRPCNotification("ITest::onText", payload);
        ASSERT_TRUE(reader.receiveLine().has_value());
    }
    EXPECT_TRUE(idle.awaitEnd());
    EXPECT_EQ(reader.call(COUNT_CALL), COUNT_ANSWER);
    EXPECT_TRUE(await([&] { return !log.getMessages().empty(); }));
    ASSERT_EQ(log.getMessages().size(), 1U);
    EXPECT_THAT(log.getMessages()[0], testing::HasSubstr("does not read"));
}

TEST_F(RPCLimit, ClientThatCallsAndNeverReadsIsDroppedAlone)
{
    const std::string echo =
        R"({"jsonrpc":"2.0","id":1,"method":"ITest::echo","params":{"text":")" + std::string(100'000, 'x') + "\"}}\n";
    RawClient greedy = connect();
    for (int i = 0; i < 30; ++i)
        greedy.send(echo);
    EXPECT_TRUE(greedy.awaitEnd());
    EXPECT_EQ(connect().call(COUNT_CALL), COUNT_ANSWER);
}

TEST_F(RPCLimit, TooManySubscriptionsAreRefused)
{
    RawClient client = connect();
    std::string patterns = "\"a\"";
    for (int i = 0; i < 256; ++i)
        patterns += ",\"a" + std::to_string(i) + "\"";
    EXPECT_EQ(client.call(R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":[)" + patterns +
                          "]}}"),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"too many subscriptions"}})");
}

#ifndef SANITIZER_NEEDS_DESCRIPTORS
TEST_F(RPCLimit, ServerWithoutAFileDescriptorLeftTurnsClientsAwayAndRecovers)
{
    RawClient before = connect();
    EXPECT_EQ(before.call(COUNT_CALL), COUNT_ANSWER);
    std::vector<FileDescriptor> fillers;
    rlimit old{};
    getrlimit(RLIMIT_NOFILE, &old);
    const rlimit small{.rlim_cur = 64, .rlim_max = old.rlim_max};
    setrlimit(RLIMIT_NOFILE, &small);
    while (fillers.empty() || fillers.back().isOpen())
        fillers.emplace_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
    fillers.pop_back();
    fillers.pop_back();
    {
        RawClient turnedAway = connect(); // takes the last descriptor itself
        EXPECT_THAT(turnedAway.receiveLine().value_or(""), testing::HasSubstr("no file descriptor left"));
    }
    EXPECT_EQ(before.call(COUNT_CALL), COUNT_ANSWER);
    setrlimit(RLIMIT_NOFILE, &old);
    EXPECT_EQ(connect().call(COUNT_CALL), COUNT_ANSWER);
}
#endif

} // namespace

} // namespace Corvane::Test
