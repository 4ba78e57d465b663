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

std::string subscriptionTo(const std::string& patterns)
{
    return R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":[)" + patterns + "]}}";
}

/// @return as many patterns, each of another name
std::string patternsUpTo(int count)
{
    std::string patterns = "\"a0\"";
    for (int i = 1; i < count; ++i)
        patterns += ",\"a" + std::to_string(i) + "\"";
    return patterns;
}

constexpr char TOO_MANY_SUBSCRIPTIONS[] =
    R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"too many subscriptions"}})";

TEST_F(RPCLimit, TooManySubscriptionsAreRefusedAndLoggedOnce)
{
    CapturedOutput log;
    RawClient client = connect();
    EXPECT_EQ(client.call(subscriptionTo(patternsUpTo(257))), TOO_MANY_SUBSCRIPTIONS);
    server.handleRPCNotification("a1", "1");
    EXPECT_EQ(client.call(subscriptionTo(patternsUpTo(256))), COUNT_ANSWER); // nothing of the first one was taken
    EXPECT_EQ(client.call(subscriptionTo("\"b\"")), TOO_MANY_SUBSCRIPTIONS);
    ASSERT_EQ(log.getMessages().size(), 1U);
    EXPECT_THAT(log.getMessages()[0], testing::HasSubstr("too many subscriptions"));
}

TEST_F(RPCLimit, SubscribingAgainIsNoFurtherSubscription)
{
    RawClient client = connect();
    EXPECT_EQ(client.call(subscriptionTo(patternsUpTo(256))), COUNT_ANSWER);
    EXPECT_EQ(client.call(subscriptionTo(patternsUpTo(256))), COUNT_ANSWER);
    EXPECT_EQ(client.call(subscriptionTo("\"a7\",\"a7\"")), COUNT_ANSWER);
    EXPECT_EQ(connect().call(subscriptionTo(patternsUpTo(256) + "," + patternsUpTo(256))), COUNT_ANSWER);
}

/// @return a batch of `count` calls that are each answered with 10,000 bytes
std::string batchOfLongAnswers(int count)
{
    const std::string call =
        R"({"jsonrpc":"2.0","id":1,"method":"ITest::repeat","params":{"times":1000,"text":"0123456789"}})";
    std::string batch = "[" + call;
    for (int i = 1; i < count; ++i)
        batch += "," + call;
    return batch + R"(,{"jsonrpc":"2.0","id":1,"method":"ITest::count"}])";
}

TEST_F(RPCLimit, BatchIsNotCarriedOutFurtherOnceItsAnswersAreTooLong)
{
    CapturedOutput log;
    RawClient client = connect();
    const std::string tooLong =
        R"({"jsonrpc":"2.0","id":null,"error":{"code":-32000,"message":"the answers are too long"}}])";

    EXPECT_THAT(client.call(batchOfLongAnswers(100)), testing::EndsWith(std::string(COUNT_ANSWER) + "]"));
    EXPECT_EQ(server.counted, 1);
    const std::string answer = client.call(batchOfLongAnswers(200));
    EXPECT_THAT(answer, testing::EndsWith(tooLong));
    EXPECT_GT(answer.size(), 1024 * 1024U);
    EXPECT_LT(answer.size(), 1024 * 1024U + 20'000);
    EXPECT_EQ(server.counted, 1);
    EXPECT_THAT(client.call(batchOfLongAnswers(200)), testing::EndsWith(tooLong));
    EXPECT_EQ(log.getMessages().size(), 1U);
}

TEST_F(RPCLimit, BatchOfWhatIsNoCallIsNotAnsweredWithoutEnd)
{
    std::string batch = "[1";
    for (int i = 0; i < 500'000; ++i)
        batch += ",1";
    EXPECT_LT(connect().call(batch + "]").size(), 1024 * 1024U + 1000);
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
