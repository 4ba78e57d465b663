#include "ServerFixture.h"

#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCClient.h>
#include <cstdio>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace Corvane::Test
{

namespace
{

/// A client with a subscription, and what came of it.
class Subscriber
{
public:
    explicit Subscriber(std::vector<std::string> patterns = {"*"}) : client("TEST")
    {
        client.subscribe(
            std::move(patterns),
            [this](const std::string& name, const std::string& payload) { notifications.put(name + " " + payload); },
            [this](bool connected) { connections.put(connected); });
    }

    std::string next()
    {
        std::string notification = "nothing";
        notifications.take(notification);
        return notification;
    }
    bool becomes(bool expected)
    {
        bool connected = !expected;
        return connections.take(connected) && connected == expected;
    }

private:
    Mailbox<std::string> notifications;
    Mailbox<bool> connections;
    RPCClient client; // last: its handlers use the mailboxes
};

using RPCSubscription = ServerFixture;

TEST_F(RPCSubscription, DeliversWhatIsRaisedOnceItStands)
{
    Subscriber subscriber;
    server.notifyRing(1);
    server.notifyRing(2);
    EXPECT_EQ(subscriber.next(), R"(ITest::onRing {"number":1})");
    EXPECT_EQ(subscriber.next(), R"(ITest::onRing {"number":2})");
    EXPECT_TRUE(subscriber.becomes(true));
}

TEST_F(RPCSubscription, IsForItsPatternsOnly)
{
    Subscriber subscriber({"ITest::onOther"});
    server.notifyRing(1);
    server.handleRPCNotification("ITest::onOther", "{}");
    EXPECT_EQ(subscriber.next(), "ITest::onOther {}");
}

TEST_F(RPCSubscription, IsMadeAgainWhenTheServerIsBack)
{
    Subscriber subscriber;
    EXPECT_TRUE(subscriber.becomes(true));
    for (unsigned int round = 0; round < 20; ++round) {
        server.shutdown();
        ASSERT_TRUE(subscriber.becomes(false));
        server.init();
        ASSERT_TRUE(subscriber.becomes(true));
        server.notifyRing(round);
        ASSERT_EQ(subscriber.next(), "ITest::onRing {\"number\":" + std::to_string(round) + "}");
    }
}

/// @return the next client of a socket that listens
FileDescriptor acceptFrom(const FileDescriptor& listening)
{
    pollfd wait{.fd = listening.get(), .events = POLLIN, .revents = 0};
    poll(&wait, 1, static_cast<int>(std::chrono::milliseconds(DEADLINE).count()));
    return FileDescriptor(accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

TEST_F(RPCSubscription, IsTriedAgainWhereTheServerIsThereButDoesNotTakeIt)
{
    Subscriber subscriber;
    EXPECT_TRUE(subscriber.becomes(true));
    server.shutdown();
    EXPECT_TRUE(subscriber.becomes(false));
    // In the place of the server stands one that hangs up. It comes from another folder, ready: that is told once.
    TemporaryDirectory elsewhere;
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (elsewhere.getPath() + "/s").copy(address.sun_path, sizeof address.sun_path - 1);
    const FileDescriptor listening(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    ASSERT_EQ(bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listening.get(), 8), 0);
    ASSERT_EQ(rename(address.sun_path, server.getFixedRPCAddress().c_str()), 0);

    EXPECT_TRUE(acceptFrom(listening).isOpen());
    EXPECT_TRUE(acceptFrom(listening).isOpen());
}

TEST_F(RPCSubscription, EndsWhileTheServerIsAway)
{
    auto subscriber = std::make_unique<Subscriber>();
    EXPECT_TRUE(subscriber->becomes(true));
    server.shutdown();
    EXPECT_TRUE(subscriber->becomes(false));
    subscriber.reset(); // must not wait for the server
}

TEST(RPCSubscriptionError, WithoutAServerThrows)
{
    TemporaryRuntime runtime;
    EXPECT_THROW(Subscriber(), RPCError);
}

TEST_F(RPCSubscription, IsOneAClient)
{
    RPCClient client("TEST");
    client.subscribe({"*"}, [](const std::string&, const std::string&) {});
    EXPECT_THROW(client.subscribe({"*"}, [](const std::string&, const std::string&) {}), RPCError);
}

} // namespace

} // namespace Corvane::Test
