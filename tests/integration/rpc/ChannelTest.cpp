#include "ServerFixture.h"

#include <corvane/common/RPCChannel.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace Corvane::Test
{

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using Message = RPCChannel::Message;

/// @return whether there is something to receive before the deadline
bool awaitInput(const RPCChannel& channel)
{
    pollfd wait{.fd = channel.getDescriptor(), .events = POLLIN, .revents = 0};
    return poll(&wait, 1, std::chrono::milliseconds(DEADLINE).count()) == 1;
}

/// The next message, which is waited for; nothing when the server has closed the connection.
std::optional<Message> next(RPCChannel& channel)
{
    for (;;) {
        if (auto message = channel.take())
            return message;
        if (!awaitInput(channel) || !channel.receive())
            return channel.take();
    }
}

RPCError::Reason reasonOf(const std::function<void()>& step)
{
    try {
        step();
    } catch (const RPCError& error) {
        return error.getReason();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// A server of which the test says every byte.
class ScriptedServer
{
public:
    explicit ScriptedServer(const std::string& path, int backlog = 8)
        : listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener.get(), backlog), 0);
    }
    void accept() { connection.reset(::accept(listener.get(), nullptr, nullptr)); }
    void say(const std::string& bytes)
    {
        EXPECT_EQ(send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    void close() { connection.reset(); }

private:
    FileDescriptor listener;
    FileDescriptor connection;
};

class RPCChannelTest : public ServerFixture
{
protected:
    std::string pathOf(const std::string& name) const { return runtime.directory.getPath() + "/" + name + ".sock"; }
};

TEST_F(RPCChannelTest, AnswersCallsUnderTheirNumbers)
{
    RPCChannel channel("TEST");
    EXPECT_EQ(channel.call("ITest::echo", R"({"text":"one"})"), 1U);
    EXPECT_EQ(channel.call("ITest::unknown"), 2U);
    EXPECT_EQ(channel.call("ITest::echo", "{\"text\":\n\"three\"}"), 3U);

    const auto one = next(channel);
    ASSERT_TRUE(one);
    EXPECT_EQ(one->call, 1U);
    EXPECT_EQ(one->payload, "\"one\"");
    EXPECT_THAT(one->notification, IsEmpty());
    EXPECT_FALSE(one->error);
    const auto two = next(channel);
    ASSERT_TRUE(two && two->error);
    EXPECT_EQ(two->call, 2U);
    EXPECT_EQ(two->error->getReason(), RPCError::Reason::CALL_FAILED);
    EXPECT_STREQ(two->error->what(), "unknown method");
    const auto three = next(channel);
    ASSERT_TRUE(three);
    EXPECT_EQ(three->payload, "\"three\"");
}

TEST_F(RPCChannelTest, HearsWhatHappensAfterTheAnswerToItsSubscriptionInOrder)
{
    RPCChannel channel("TEST");
    const unsigned int subscription = channel.subscribe({"ITest::*"});
    const auto answer = next(channel);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->call, subscription);

    for (unsigned int i = 0; i < 100; ++i)
        server.notifyRing(i);
    for (unsigned int i = 0; i < 100; ++i) {
        const auto ring = next(channel);
        ASSERT_TRUE(ring);
        EXPECT_EQ(ring->notification, "ITest::onRing");
        EXPECT_EQ(ring->payload, "{\"number\":" + std::to_string(i) + "}");
    }
    EXPECT_TRUE(channel.receive());
    EXPECT_FALSE(channel.take());
}

TEST_F(RPCChannelTest, IsServedByOneThreadWithManyOthers)
{
    std::vector<std::unique_ptr<TestServer>> servers;
    std::vector<std::unique_ptr<RPCChannel>> channels;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "MANY" + std::to_string(i);
        servers.push_back(std::make_unique<TestServer>(name.c_str()));
        servers.back()->init();
        channels.push_back(std::make_unique<RPCChannel>(name));
        channels.back()->subscribe({"*"});
    }
    for (const auto& channel : channels)
        ASSERT_TRUE(next(*channel));
    for (unsigned int i = 0; i < servers.size(); ++i)
        servers[i]->notifyRing(i);
    for (unsigned int i = 0; i < channels.size(); ++i)
        EXPECT_EQ(next(*channels[i])->payload, "{\"number\":" + std::to_string(i) + "}");
}

TEST_F(RPCChannelTest, TakesWhatAServerSaidBeforeItLeft)
{
    ScriptedServer scripted(pathOf("LEAVING"));
    RPCChannel channel("LEAVING");
    scripted.accept();
    scripted.say(R"({"jsonrpc":"2.0","method":"ITest::onEnd","params":{"last":"words"}})"
                 "\nhalf a mess");
    scripted.close();

    const auto words = next(channel);
    ASSERT_TRUE(words);
    EXPECT_EQ(words->payload, R"({"last":"words"})");
    EXPECT_FALSE(next(channel)) << "a message without an end is none";
    EXPECT_EQ(reasonOf([&] { channel.call("ITest::echo"); }), RPCError::Reason::DISCONNECTED);
}

TEST_F(RPCChannelTest, PutsMessagesTogetherHoweverTheyAreCut)
{
    ScriptedServer scripted(pathOf("SLOW"));
    RPCChannel channel("SLOW");
    scripted.accept();
    const std::string messages = "{\"jsonrpc\":\"2.0\",\"id\":null,\"error\":{\"code\":-32000,\"message\":\"no\"}}\n"
                                 "{\"jsonrpc\":\"2.0\",\"method\":\"ITest::onRing\",\"params\":{}}\n";
    std::vector<Message> taken;
    for (const char byte : messages) {
        scripted.say({byte});
        ASSERT_TRUE(awaitInput(channel));
        ASSERT_TRUE(channel.receive());
        while (auto message = channel.take())
            taken.push_back(std::move(*message));
    }
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].call, 0U) << "it answers nothing that is known";
    EXPECT_TRUE(taken[0].error);
    EXPECT_EQ(taken[1].notification, "ITest::onRing");
}

TEST_F(RPCChannelTest, RefusesAMessageLongerThanItsLimitBeforeItsEnd)
{
    ScriptedServer scripted(pathOf("LONG"));
    RPCChannel channel("LONG", 1000);
    scripted.accept();
    const std::string fitting = R"({"jsonrpc":"2.0","method":"A::b","params":{}})";
    scripted.say(fitting + std::string(1000 - fitting.size(), ' ') + "\n");
    ASSERT_TRUE(next(channel));

    scripted.say(std::string(1001, ' '));
    EXPECT_EQ(reasonOf([&] { next(channel); }), RPCError::Reason::BAD_ANSWER);
}

TEST_F(RPCChannelTest, RefusesWhatIsNoMessage)
{
    ScriptedServer scripted(pathOf("STRANGE"));
    for (const char* line : {"hello\n", "{}\n", "[]\n", "{\"jsonrpc\":\"2.0\",\"id\":1}\n",
                             R"({"method":"A::b","params":{}},"evil":{})"
                             "\n"}) {
        RPCChannel channel("STRANGE");
        scripted.accept();
        scripted.say(line);
        EXPECT_EQ(reasonOf([&] { next(channel); }), RPCError::Reason::BAD_ANSWER) << line;
    }
}

TEST_F(RPCChannelTest, DoesNotWaitForAServerThatTakesNoConnection)
{
    const ScriptedServer silent(pathOf("BUSY"), 0);
    std::vector<std::unique_ptr<RPCChannel>> waiting;
    const auto connect = [&] { waiting.push_back(std::make_unique<RPCChannel>("BUSY")); };
    connect(); // the system lets one wait
    EXPECT_EQ(reasonOf(connect), RPCError::Reason::TIMED_OUT);
    EXPECT_EQ(reasonOf([] { RPCChannel("NOBODY"); }), RPCError::Reason::NO_SERVER);
    EXPECT_EQ(reasonOf([] { RPCChannel(std::string(200, 'x')); }), RPCError::Reason::BAD_ADDRESS);
}

TEST_F(RPCChannelTest, DoesNotWaitForAServerThatReadsNothing)
{
    ScriptedServer silent(pathOf("SILENT"));
    RPCChannel channel("SILENT");
    silent.accept();
    const std::string parameters = R"({"text":")" + std::string(10000, 'x') + "\"}";
    EXPECT_EQ(reasonOf([&] {
                  for (int i = 0; i < 100000; ++i)
                      channel.call("ITest::echo", parameters);
              }),
              RPCError::Reason::DISCONNECTED);
    EXPECT_EQ(reasonOf([&] { channel.call("ITest::count"); }), RPCError::Reason::DISCONNECTED)
        << "the rest of the last message would be missing";
}

TEST_F(RPCChannelTest, IsTurnedAwayWithTheReason)
{
    TestServer small("SMALL");
    small.setConnectionLimit(1);
    small.init();
    RPCChannel first("SMALL");
    first.call("ITest::count");
    ASSERT_TRUE(next(first));
    RPCChannel second("SMALL");

    const auto message = next(second);
    ASSERT_TRUE(message && message->error);
    EXPECT_THAT(message->error->what(), HasSubstr("too many connections"));
    EXPECT_FALSE(next(second));
}

} // namespace

} // namespace Corvane::Test
