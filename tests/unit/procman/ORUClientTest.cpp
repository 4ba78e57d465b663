#include <corvane/procman/ORUClient.h>

#include "FakeManager.h"
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using Rect = ISurfaceCompositing::Rect;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ORUClientTest : public testing::Test
{
protected:
    ORUClientTest() : client(ORUClient::create(Client::TYPE_WINDOW)) {}

    void start()
    {
        server.emplace();
        server->init();
        client->init();
    }

    TemporaryRuntime runtime;
    std::optional<FakeManager> server;
    const std::unique_ptr<ORUClient> client;
};

/// A manager that the system takes connections for and that answers nothing.
class ListeningSocket
{
public:
    ListeningSocket() : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        RPCServer("ORU").getFixedRPCAddress().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(socket.get(), 1), 0);
    }
    void takeOneCallAndHangUp() const
    {
        const FileDescriptor caller(accept(socket.get(), nullptr, nullptr));
        char buffer[1024];
        EXPECT_GT(recv(caller.get(), buffer, sizeof buffer, 0), 0);
    }

private:
    const FileDescriptor socket;
};

/// The reason and the text of what `action` throws.
std::pair<std::optional<RPCError::Reason>, std::string> failureOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const RPCError& error) {
        return {error.getReason(), error.what()};
    }
    return {std::nullopt, "nothing was thrown"};
}

} // namespace

TEST_F(ORUClientTest, RefusesATypeThatDoesNotExist)
{
    CapturedOutput error;
    try {
        ORUClient::create(static_cast<Client::Type>(4));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.getCode(), RETURN_INVALID_PARAMETER);
    }
    EXPECT_EQ(error.getMessages(), std::vector<std::string>{"create(): throwing exception: Invalid parameter"});
}

TEST_F(ORUClientTest, IsToBeStartedFirst)
{
    const std::function<void()> operations[] = {[&] {
                                                    client->releaseResource({3, 4});
                                                },
                                                [&] { client->setOpacity(4, 1); }, [&] { client->getOpacity(4); },
                                                [&] { client->bringToFront(4); }};
    CapturedOutput error;
    for (const auto& operation : operations) {
        try {
            operation();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.getCode(), RETURN_INVALID_STATE);
        }
    }
    EXPECT_EQ(error.getMessages().size(), 4U);
    std::set<int> lines;
    for (const DebugLine& line : error.getDebugLines())
        lines.insert(line.line);
    EXPECT_EQ(lines.size(), 4U) << "each operation logs a line of its own";
}

TEST_F(ORUClientTest, AsksForAWindowWithItsUidItsProcessAndItsSettings)
{
    start();
    server->setResult("IResourceAcquisition::getResource", R"({"state":3,"resourceIndex":7})");

    const auto token = client->getResource("play\"er", {1, Rect(-1, 2, 3, 4), 5, 300, false});

    EXPECT_EQ(token.getState(), 3U);
    EXPECT_EQ(token.getResourceIndex(), 7U);
    EXPECT_THAT(
        server->getCalls(),
        ElementsAre("IResourceAcquisition::getResource {\"uid\":\"play\\\"er\",\"pid\":" + std::to_string(getpid()) +
                    R"(,"clientType":3,"resourceType":1,"settings":{"sessionIndex":1,"location":{"x":-1,"y":2,)"
                    R"("width":3,"height":4},"zOrder":5,"opacity":300,"visibility":false}})"));
}

TEST_F(ORUClientTest, GivesAWindowBackByItsIndex)
{
    start();
    client->releaseResource({3, 7});

    EXPECT_THAT(server->getCalls(), ElementsAre(R"(IResourceAcquisition::releaseResource {"index":7})"));
}

TEST_F(ORUClientTest, SetsTheProperties)
{
    start();
    client->setVisibility(1, false);
    client->setOpacity(2, 300);
    client->setZOrder(3, 4294967295U);
    client->setLocation(4, Rect(-1, 2, 3, 4));

    EXPECT_THAT(server->getCalls(),
                ElementsAre(R"(IWindowCompositing::setVisibility {"index":1,"visibility":false})",
                            R"(IWindowCompositing::setOpacity {"index":2,"opacity":300})",
                            R"(IWindowCompositing::setZOrder {"index":3,"zorder":4294967295})",
                            R"(IWindowCompositing::setLocation {"index":4,"location":{"x":-1,"y":2,"width":3,)"
                            R"("height":4}})"));
}

TEST_F(ORUClientTest, ReturnsThePropertiesAsTheManagerTellsThem)
{
    start();
    server->setResult("IWindowCompositing::getVisibility", "true");
    server->setResult("IWindowCompositing::getOpacity", "300");
    server->setResult("IWindowCompositing::getZOrder", "7");
    server->setResult("IWindowCompositing::getLocation", R"({"x":-1,"y":2,"width":3,"height":4})");

    EXPECT_TRUE(client->getVisibility(1));
    EXPECT_EQ(client->getOpacity(2), 300U);
    EXPECT_EQ(client->getZOrder(3), 7U);
    EXPECT_EQ(client->getLocation(4).serialize(), Rect(-1, 2, 3, 4).serialize());
    EXPECT_THAT(server->getCalls(), ElementsAre(R"(IWindowCompositing::getVisibility {"index":1})",
                                                R"(IWindowCompositing::getOpacity {"index":2})",
                                                R"(IWindowCompositing::getZOrder {"index":3})",
                                                R"(IWindowCompositing::getLocation {"index":4})"));
}

TEST_F(ORUClientTest, Stacks)
{
    start();
    client->bringToFront(1);
    client->sendToBack(2);
    client->bringForward(3);
    client->sendBackward(4);

    EXPECT_THAT(server->getCalls(), ElementsAre(R"(IWindowCompositing::bringToFront {"index":1})",
                                                R"(IWindowCompositing::sendToBack {"index":2})",
                                                R"(IWindowCompositing::bringForward {"index":3})",
                                                R"(IWindowCompositing::sendBackward {"index":4})"));
}

TEST_F(ORUClientTest, PassesARefusalOfTheManagerOn)
{
    start();
    server->refuse("there is no window 9");

    const auto [reason, text] = failureOf([&] { client->setOpacity(9, 1); });

    EXPECT_EQ(reason, RPCError::Reason::CALL_FAILED);
    EXPECT_EQ(text, "there is no window 9");
}

TEST_F(ORUClientTest, DoesNotTakeAnAnswerOfAnotherKindForAValue)
{
    start();
    server->setResult("IWindowCompositing::getOpacity", "\"opaque\"");

    EXPECT_THROW(client->getOpacity(1), SerialError);
}

TEST_F(ORUClientTest, SaysThatNoManagerIsRunning)
{
    client->init();

    const auto [reason, text] = failureOf([&] { client->getResource("player", {}); });

    EXPECT_EQ(reason, RPCError::Reason::NO_SERVER);
    EXPECT_THAT(text, StartsWith("no process manager is running: "));
}

TEST_F(ORUClientTest, SaysThatTheManagerHasGoneAndWorksAgainWithOneThatIsBack)
{
    start();
    server->setResult("IWindowCompositing::getOpacity", "1");
    EXPECT_EQ(client->getOpacity(4), 1U);

    server.reset();
    const auto [reason, text] = failureOf([&] { client->getOpacity(4); });
    EXPECT_EQ(reason, RPCError::Reason::NO_SERVER);
    EXPECT_THAT(text, StartsWith("no process manager is running: "));

    server.emplace();
    server->setResult("IWindowCompositing::getOpacity", "2");
    server->init();
    EXPECT_EQ(client->getOpacity(4), 2U);
}

TEST_F(ORUClientTest, SaysThatTheManagerWentInTheMiddleOfACall)
{
    const ListeningSocket manager;
    client->init();
    std::thread mortal([&] { manager.takeOneCallAndHangUp(); });

    const auto [reason, text] = failureOf([&] { client->getOpacity(4); });
    mortal.join();

    EXPECT_EQ(reason, RPCError::Reason::DISCONNECTED);
    EXPECT_THAT(text, StartsWith("the process manager has gone: "));
}

TEST_F(ORUClientTest, SaysThatTheManagerDoesNotAnswerWithinTheDeadline)
{
    const ListeningSocket manager;
    client->init();

    const auto [reason, text] = failureOf([&] { client->getOpacity(4); });

    EXPECT_EQ(reason, RPCError::Reason::TIMED_OUT);
    EXPECT_EQ(text, "the process manager does not answer: Timed out");
}

TEST_F(ORUClientTest, ServesManyThreadsAtOnce)
{
    start();
    server->setResult("IWindowCompositing::getOpacity", "1");
    server->setResult("IWindowCompositing::getZOrder", "2");
    constexpr int THREADS = 8;
    constexpr int CALLS = 50;
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < CALLS; ++j)
                if (client->getOpacity(4) != 1U || client->getZOrder(4) != 2U)
                    ++failures;
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(failures, 0);
    EXPECT_EQ(server->getCalls().size(), static_cast<std::size_t>(2 * THREADS * CALLS));
}

} // namespace Corvane::Test
