#include "ServerFixture.h"

#include <corvane/common/RPCClient.h>

namespace Corvane::Test
{

namespace
{

using namespace std::chrono_literals;
using RPCClientCall = ServerFixture;

/// @return why the call failed; fails the test when it did not
RPCError errorOf(RPCClient& client, const std::string& method, const std::string& parameters = "{}",
                 std::chrono::milliseconds deadline = DEADLINE)
{
    try {
        client.call(method, parameters, deadline);
    } catch (const RPCError& error) {
        return error;
    }
    ADD_FAILURE() << "the call did not fail";
    return {RPCError::Reason::CALL_FAILED, 0, "no error"};
}

TEST_F(RPCClientCall, GivesTheResultAsJson)
{
    RPCClient client("TEST");
    EXPECT_EQ(client.call("ITest::echo", R"({"text":"a\"b"})"), R"("a\"b")");
    EXPECT_EQ(client.call("ITest::count"), "null");
}

TEST_F(RPCClientCall, ThatFailsThrowsTheServersMessageAndTheNextOneWorks)
{
    RPCClient client("TEST");
    const RPCError error = errorOf(client, "ITest::throwRuntimeError");
    EXPECT_EQ(error.getReason(), RPCError::Reason::CALL_FAILED);
    EXPECT_EQ(error.getCode(), -32000);
    EXPECT_STREQ(error.what(), "x");
    EXPECT_EQ(errorOf(client, "ITest::none").getCode(), -32601);
    EXPECT_EQ(errorOf(client, "ITest::count", "{").getCode(), -32700);
    EXPECT_EQ(client.call("ITest::count"), "null");
}

TEST_F(RPCClientCall, EndsAtItsDeadlineAndTheNextOneGetsItsOwnAnswer)
{
    RPCClient client("TEST");
    const RPCError error = errorOf(client, "ITest::hold", "{}", 20ms);
    EXPECT_EQ(error.getReason(), RPCError::Reason::TIMED_OUT);
    EXPECT_EQ(error.getCode(), 5);
    EXPECT_STREQ(error.what(), "Timed out");
    server.release.put(true);
    EXPECT_EQ(client.call("ITest::echo", R"({"text":"mine"})", DEADLINE), "\"mine\"");
}

TEST_F(RPCClientCall, MayHaveADeadlineThatStandsForNever)
{
    RPCClient client("TEST");
    for (const std::chrono::milliseconds never :
         {std::chrono::milliseconds(std::chrono::hours(1'000'000)), std::chrono::milliseconds::max()}) {
        std::jthread other([&] { client.call("ITest::hold", "{}", never); });
        bool ignored{};
        ASSERT_TRUE(server.held.take(ignored));
        std::jthread releaser([&] { server.release.put(true); });
        EXPECT_EQ(client.call("ITest::count", "{}", never), "null");
    }
}

TEST_F(RPCClientCall, WaitsForItsTurnNoLongerThanItsDeadline)
{
    RPCClient client("TEST");
    std::jthread other([&] { client.call("ITest::hold", "{}", DEADLINE); });
    bool ignored{};
    ASSERT_TRUE(server.held.take(ignored));
    EXPECT_EQ(errorOf(client, "ITest::count", "{}", 20ms).getReason(), RPCError::Reason::TIMED_OUT);
    server.release.put(true);
    other.join();
    EXPECT_EQ(server.counted, 0);
}

TEST(RPCClientConnection, WithoutAServerIsAClearErrorAtOnce)
{
    TemporaryRuntime runtime;
    RPCClient client("NONE");
    const RPCError error = errorOf(client, "ITest::count");
    EXPECT_EQ(error.getReason(), RPCError::Reason::NO_SERVER);
    EXPECT_EQ(error.what(), "no server NONE listens on " + runtime.directory.getPath() + "/NONE.sock");
}

TEST_F(RPCClientCall, WorksAgainWhenTheServerIsBack)
{
    RPCClient client("TEST");
    client.call("ITest::count");
    server.shutdown();
    EXPECT_EQ(errorOf(client, "ITest::count").getReason(), RPCError::Reason::NO_SERVER);
    server.init();
    EXPECT_EQ(client.call("ITest::count"), "null");
    server.shutdown();
    server.init();
    EXPECT_EQ(client.call("ITest::count"), "null") << "restarted between two calls";
}

TEST_F(RPCClientCall, ThatTheServerCannotFinishIsDisconnected)
{
    RPCClient client("TEST");
    std::jthread stopper([this] {
        bool ignored{};
        server.held.take(ignored);
        std::jthread letGo([this] { server.release.put(true); });
        server.shutdown();
        letGo.join();
    });
    // The handler may just have been answered when the server went down: both ends are right, a hang is not.
    try {
        EXPECT_EQ(client.call("ITest::hold", "{}", DEADLINE), "null");
    } catch (const RPCError& error) {
        EXPECT_EQ(error.getReason(), RPCError::Reason::DISCONNECTED);
    }
    stopper.join();
}

TEST_F(RPCClientCall, OfManyThreadsEachGetsItsOwnAnswer)
{
    RPCClient client("TEST");
    std::vector<std::jthread> callers;
    for (int t = 0; t < 8; ++t)
        callers.emplace_back([&client, t] {
            for (int i = 0; i < 200; ++i) {
                const std::string text = "\"" + std::to_string(t * 1000 + i) + "\"";
                ASSERT_EQ(client.call("ITest::echo", "{\"text\":" + text + "}", DEADLINE), text);
            }
        });
    for (std::jthread& caller : callers)
        caller.join();
}

TEST(RPCClientConnection, TurnedAwayThrowsTheReason)
{
    TemporaryRuntime runtime;
    TestServer server;
    server.setConnectionLimit(0);
    server.init();
    RPCClient client("TEST");
    EXPECT_STREQ(errorOf(client, "ITest::count").what(), "too many connections");
}

TEST_F(RPCClientCall, LargeResultArrivesWhole)
{
    RPCClient client("TEST");
    const std::string text = "\"" + std::string(900'000, 'x') + "\"";
    EXPECT_EQ(client.call("ITest::echo", "{\"text\":" + text + "}", DEADLINE), text);
}

} // namespace

} // namespace Corvane::Test
