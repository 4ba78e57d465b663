#include "RawClient.h"

#include <corvane/common/RPCServer.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>

/// A server whose process may have little memory, and clients that want a lot of it.
namespace Corvane::Test
{

namespace
{

class RPCSmallProcess : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(process.awaitOutput("ready")); }
    RawClient connect() { return RawClient(runtime.directory.getPath() + "/TEST.sock"); }

    /// @return what the server's process has in memory of its own, in kilobytes
    long readMemory() const
    {
        std::ifstream file("/proc/" + std::to_string(process.getPid()) + "/status");
        for (std::string word; file >> word;)
            if (long kilobytes = 0; word == "RssAnon:" && file >> kilobytes)
                return kilobytes;
        return 0;
    }

    TemporaryRuntime runtime;
    ChildProcess process{{SMALL_SERVER, "160"}};
};

TEST_F(RPCSmallProcess, SurvivesBatchesWhoseAnswersWouldFillIt)
{
    std::string batch = R"([{"jsonrpc":"2.0","id":1,"method":"rpc.discover"})";
    for (int i = 1; i < 21'000; ++i)
        batch += R"(,{"jsonrpc":"2.0","id":1,"method":"rpc.discover"})";
    std::vector<RawClient> clients;
    for (int i = 0; i < 40; ++i)
        clients.push_back(connect());
    for (RawClient& client : clients)
        client.send(batch + "]\n");
    for (RawClient& client : clients)
        EXPECT_THAT(client.receiveLine().value_or("nothing"), testing::EndsWith("the answers are too long\"}}]"));
    EXPECT_EQ(connect().call(R"({"jsonrpc":"2.0","id":1,"method":"ITest::count"})"),
              R"({"jsonrpc":"2.0","id":1,"result":null})");
}

TEST_F(RPCSmallProcess, KeepsNothingOfAnswersThatWereFetched)
{
    std::vector<RawClient> clients;
    for (int i = 0; i < 30; ++i) {
        clients.push_back(connect());
        const std::string answer = clients.back().call(
            R"({"jsonrpc":"2.0","id":7,"method":"ITest::repeat","params":{"text":"0123456789","times":1000000}})");
        ASSERT_GT(answer.size(), 10'000'000U) << answer;
    }
}

TEST_F(RPCSmallProcess, GivesTheMemoryOfLargeMessagesBack)
{
    constexpr long ALLOWANCE = 200; // the buffer for what is received is part of it
    const std::string begin = R"({"jsonrpc":"2.0","id":1,"method":"ITest::count","params":{"text":")";
    const std::string answer = R"({"jsonrpc":"2.0","id":1,"result":null})";
    RawClient client = connect();
    ASSERT_EQ(client.call(begin + "\"}}"), answer);
    const long before = readMemory();
    ASSERT_GT(before, 0);
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(client.call(begin + std::string(1'000'000, 'a') + "\"}}"), answer);
    EXPECT_TRUE(await([&] { return readMemory() <= before + ALLOWANCE; })) << before << ", then " << readMemory();
}

TEST_F(RPCSmallProcess, SurvivesAnswersThatDoNotFit)
{
    RawClient greedy = connect();
    EXPECT_THAT(
        greedy.call(
            R"({"jsonrpc":"2.0","id":7,"method":"ITest::repeat","params":{"text":"0123456789","times":20000000}})"),
        testing::HasSubstr(R"("id":7,"error":{"code":-32000,)"));
    EXPECT_EQ(greedy.call(R"({"jsonrpc":"2.0","id":1,"method":"ITest::count"})"),
              R"({"jsonrpc":"2.0","id":1,"result":null})");
}

} // namespace

} // namespace Corvane::Test
