#include "ServerFixture.h"

#include <filesystem>
#include <support/CapturedOutput.h>
#include <support/TaskState.h>

/// What a server does while a client has not read what was sent to it.
namespace Corvane::Test
{

namespace
{

constexpr char COUNT[] = "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"ITest::count\"}\n";
constexpr char SUCCESS[] = R"({"jsonrpc":"2.0","id":1,"result":null})";
constexpr unsigned int FOUR_MEGABYTES = 4'000'000;

/// @return a call that is answered with so many bytes and a few
std::string callForBytes(unsigned int bytes)
{
    const std::string times = std::to_string(bytes / 10);
    return R"({"jsonrpc":"2.0","id":1,"method":"ITest::repeat","params":{"text":"0123456789","times":)" + times +
           "}}\n";
}

class RPCBackPressure : public ServerFixture
{
protected:
    /// Makes the server answer the client with more than its socket takes, and with nothing behind it.
    void letOutputWait(RawClient& client, const std::string& further = "")
    {
        client.send(callForBytes(FOUR_MEGABYTES) + further);
        ASSERT_TRUE(client.awaitInput());
        letTheServerGoOn();
    }

    /// Returns when the server has done whatever it had to do before now.
    void letTheServerGoOn()
    {
        for (int i = 0; i < 2; ++i)
            ASSERT_THAT(other->call(callForBytes(10)), testing::HasSubstr("0123456789"));
    }

    void subscribe(RawClient& client)
    {
        ASSERT_EQ(client.call(R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":["*"]}})"),
                  SUCCESS);
    }

    void SetUp() override
    {
        ServerFixture::SetUp();
        other.emplace(connect());
    }

    std::optional<RawClient> other;
};

TEST_F(RPCBackPressure, OneAnswerOfAnySizeReachesAClientThatReads)
{
    EXPECT_GT(connect().call(callForBytes(20'000'000)).size(), 20'000'000U);
}

TEST_F(RPCBackPressure, ManyCallsAtOnceAreAllAnsweredToAClientThatReads)
{
    constexpr int CALLS = 1000;
    RawClient client = connect();
    std::jthread writer([&client] {
        std::string calls;
        for (int i = 0; i < CALLS; ++i)
            calls += callForBytes(20'000);
        client.send(calls + COUNT);
    });
    for (int i = 0; i < CALLS; ++i)
        ASSERT_GT(client.receiveLine().value_or("").size(), 20'000U);
    EXPECT_EQ(client.receiveLine(), SUCCESS);
}

TEST_F(RPCBackPressure, NothingFurtherIsHandledBeforeTheOutputHasDrained)
{
    RawClient client = connect();
    letOutputWait(client, std::string(COUNT) + COUNT);
    client.send(COUNT);
    letTheServerGoOn();
    EXPECT_EQ(server.counted, 0);

    EXPECT_GT(client.receiveLine().value_or("").size(), FOUR_MEGABYTES);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(client.receiveLine(), SUCCESS);
    EXPECT_EQ(server.counted, 3);
}

TEST_F(RPCBackPressure, MessagesThatHadToWaitAreNotTakenForOneThatIsTooLong)
{
    RawClient client = connect();
    const std::string head = R"({"jsonrpc":"2.0","id":1,"method":"ITest::echo","params":{"text":")";
    const std::string longest = head + std::string(1024 * 1024 - head.size() - 3, 'x') + "\"}}\n";
    std::jthread writer([&] { client.send(callForBytes(FOUR_MEGABYTES) + longest + COUNT + longest + COUNT); });
    EXPECT_GT(client.receiveLine().value_or("").size(), FOUR_MEGABYTES);
    for (int i = 0; i < 2; ++i) {
        EXPECT_GT(client.receiveLine().value_or("").size(), 1'000'000U);
        EXPECT_EQ(client.receiveLine(), SUCCESS);
    }
}

TEST_F(RPCBackPressure, OneMebibyteOfNotificationsMayWaitBehindAnAnswer)
{
    RawClient client = connect();
    subscribe(client);
    letOutputWait(client);
    const std::string payload = "\"" + std::string(100'000, 'x') + "\"";
    for (int i = 0; i < 10; ++i)
        server.handleRPCNotification("ITest::onText", payload);
    letTheServerGoOn();
    EXPECT_GT(client.receiveLine().value_or("").size(), FOUR_MEGABYTES);
    for (int i = 0; i < 10; ++i)
        EXPECT_THAT(client.receiveLine().value_or(""), testing::HasSubstr(payload));
    client.send(COUNT);
    EXPECT_EQ(client.receiveLine(), SUCCESS);
}

TEST_F(RPCBackPressure, MoreNotificationsThanThatDisconnectAlsoBehindAnAnswer)
{
    CapturedOutput log;
    RawClient client = connect();
    subscribe(client);
    letOutputWait(client);
    const std::string payload = "\"" + std::string(100'000, 'x') + "\"";
    for (int i = 0; i < 11; ++i)
        server.handleRPCNotification("ITest::onText", payload);
    ASSERT_TRUE(await([&] { return !log.getMessages().empty(); }));
    EXPECT_THAT(log.getMessages()[0], testing::HasSubstr("does not read"));
    EXPECT_TRUE(client.awaitEnd());
    letTheServerGoOn();
}

TEST_F(RPCBackPressure, ClientThatNeverReadsKeepsNeitherTheThreadAwakeNorItsPlaceWhenItDies)
{
    auto client = std::make_unique<RawClient>(connect());
    letOutputWait(*client, COUNT);
    client->endInput();
    letTheServerGoOn();
    // The server's thread is the only one besides this.
    const auto serverSleeps = [] {
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
            if (task.path().filename() != std::to_string(gettid()) && readTaskState(task.path()) != 'S')
                return false;
        return true;
    };
    EXPECT_TRUE(await(serverSleeps));

    const auto countDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = countDescriptors();
    client.reset();
    EXPECT_TRUE(await([&] { return countDescriptors() == before - 2; }));
    EXPECT_EQ(server.counted, 0);
    EXPECT_TRUE(await(serverSleeps));
}

TEST_F(RPCBackPressure, ClientThatHasEndedItsInputStillGetsAllItsAnswers)
{
    RawClient client = connect();
    letOutputWait(client, COUNT);
    client.endInput();
    letTheServerGoOn();
    EXPECT_GT(client.receiveLine().value_or("").size(), FOUR_MEGABYTES);
    EXPECT_EQ(client.receiveLine(), SUCCESS);
    EXPECT_TRUE(client.awaitEnd());
}

} // namespace

} // namespace Corvane::Test
