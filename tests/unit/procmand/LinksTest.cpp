#include "supervision/Links.h"

#include <corvane/common/RPCServer.h>
#include <corvane/foundation/ValueObjects.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace Procmand
{
namespace
{

using Corvane::Test::await;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// Answers the question for the state, and counts the calls.
class StateServer : public Corvane::RPCServer
{
public:
    StateServer() : RPCServer("APPtester")
    {
        interfaces["IApplication"]["getState"] = static_cast<Handler>(&StateServer::getState);
        interfaces["IApplication"]["terminate"] = static_cast<Handler>(&StateServer::terminate);
    }
    ~StateServer() override { shutdown(); }

private:
    std::string getState(const Corvane::IRPC::RPCSynchronousMethodObject& request)
    {
        return Corvane::IRPC::RPCResultObject(request, Corvane::StringObject(std::string("RUNNING"))).serialize();
    }
    std::string terminate(const Corvane::IRPC::RPCSynchronousMethodObject& request)
    {
        return Corvane::IRPC::RPCResultObject(request, Corvane::StringObject(std::string("done"))).serialize();
    }
};

/// Links to control servers of the test's own. What comes of them is heard in words.
class LinksTest : public testing::Test, private ILinkListener
{
protected:
    /// Not the destructor's: until the loop has ended it calls the operations of this class.
    void TearDown() override
    {
        {
            std::lock_guard guard(box.lock);
            for (auto& [uid, application] : box.registry.getAll())
                links.disconnect(application);
        }
        box.workers.finish();
        box.loop.stop();
        looper.join();
        box.loop.discard();
    }

    Settings makeSettings() const
    {
        Settings settings;
        settings.stateFolder = state.getPath();
        settings.callDeadline = std::chrono::milliseconds(300);
        return settings;
    }
    void connect(const std::string& uid = "tester")
    {
        std::lock_guard guard(box.lock);
        links.connect(box.registry.add(uid));
    }
    bool isLinked(const std::string& uid = "tester")
    {
        std::lock_guard guard(box.lock);
        return box.registry.require(uid).isConnected;
    }
    std::string next()
    {
        std::string word = "nothing";
        heard.take(word);
        return word;
    }
    /// A server by its socket only.
    Corvane::FileDescriptor listenAs(const std::string& uid, int backlog) const
    {
        Corvane::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = runtime.directory.getPath() + "/APP" + uid + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(socket.get(), backlog), 0);
        return socket;
    }
    void flood(unsigned int count)
    {
        for (unsigned int i = 1; i <= count; ++i)
            server.handleRPCNotification("IWindow::onOpacityChange", "{\"newOpacity\":" + std::to_string(i) + "}");
    }

    Corvane::Test::TemporaryRuntime runtime;
    Corvane::Test::TemporaryDirectory state;
    Corvane::Test::Mailbox<std::string> heard;
    StateServer server;
    Box box{makeSettings(), [](const std::string&, const std::string&) {}};
    Links links{box, *this};
    std::thread looper{[this] { box.loop.run(); }};

private:
    void onConnected(ManagedApplication&) override { heard.put("connected"); }
    void onDisconnected(ManagedApplication&) override { heard.put("disconnected"); }
    void onSilence(ManagedApplication& application) override { heard.put("silence of " + application.uid); }
    void onNotification(ManagedApplication&, const std::string& name, const std::string& payload) override
    {
        heard.put(name + " " + payload);
    }
    void onState(ManagedApplication&, const std::string& state, bool isFocused) override
    {
        heard.put("state " + state + (isFocused ? " focused" : ""));
    }
};

} // namespace

TEST_F(LinksTest, AskForTheStateAndHearWhatChanges)
{
    server.init();
    connect();
    EXPECT_EQ(next(), "connected");
    EXPECT_EQ(next(), "state RUNNING");
    server.handleRPCNotification("IApplication::onKeepAlive", "{}");
    EXPECT_EQ(next(), "IApplication::onKeepAlive {}");
}

TEST_F(LinksTest, AreMadeForTheLastWordsOfAProcessThatEndsMeanwhile)
{
    server.init();
    connect();
    {
        std::lock_guard guard(box.lock);
        box.registry.require("tester").end.emplace();
    }
    ASSERT_EQ(next(), "connected");
    ASSERT_EQ(next(), "state RUNNING");
    server.handleRPCNotification("IApplication::onStateChange", R"({"newState":"ABORTED"})");
    server.shutdown();

    EXPECT_EQ(next(), R"(IApplication::onStateChange {"newState":"ABORTED"})");
    EXPECT_EQ(next(), "disconnected");
}

TEST_F(LinksTest, AreMadeAgainWhenAServerThatLeftIsBack)
{
    server.init();
    connect();
    ASSERT_EQ(next(), "connected");
    ASSERT_EQ(next(), "state RUNNING");
    server.shutdown();
    ASSERT_EQ(next(), "disconnected");
    EXPECT_FALSE(isLinked());
    server.init();
    EXPECT_EQ(next(), "connected");
}

TEST_F(LinksTest, GiveCallsTheirAnswers)
{
    server.init();
    connect();
    ASSERT_EQ(next(), "connected");
    ASSERT_EQ(next(), "state RUNNING");
    const auto call = [this](const std::string& method) {
        std::lock_guard guard(box.lock);
        links.call(box.registry.require("tester"), method, "{}",
                   [this](const std::string* result, const std::string& problem) {
                       heard.put(result != nullptr ? "result " + *result : "problem " + problem);
                   });
    };
    call("IApplication::terminate");
    EXPECT_EQ(next(), "result \"done\"");
    call("IApplication::dance");
    EXPECT_EQ(next(), "problem unknown method");
}

TEST_F(LinksTest, AreMadeBesideAnyNumberOfSilentServersWithoutAThread)
{
    // They would be many times the deadline one after the other.
    constexpr int SILENT = 150;
    std::vector<Corvane::FileDescriptor> silent;
    for (int i = 0; i < SILENT; ++i) {
        silent.push_back(listenAs("silent" + std::to_string(i), 8));
        connect("silent" + std::to_string(i));
    }
    server.init();
    connect();
    EXPECT_EQ(next(), "connected") << "none of them has been given up by then";
    EXPECT_EQ(next(), "state RUNNING");
    for (int i = 0; i < SILENT; ++i)
        EXPECT_THAT(next(), StartsWith("silence of silent"));
}

TEST_F(LinksTest, TakeAServerThatHasNoRoomForAnotherClientForASilentOne)
{
    const Corvane::FileDescriptor full = listenAs("full", 0);
    const Corvane::RPCChannel other("APPfull"); // the one that may wait
    connect("full");
    EXPECT_EQ(next(), "silence of full");
}

TEST_F(LinksTest, WaitWithFurtherOnesWhenTooManyServersOweTheirAnswer)
{
    std::vector<Corvane::FileDescriptor> silent;
    for (std::size_t i = 0; i <= Links::OPENING_LIMIT; ++i)
        silent.push_back(listenAs("silent" + std::to_string(i), 8));
    for (std::size_t i = 0; i <= Links::OPENING_LIMIT; ++i)
        connect("silent" + std::to_string(i));
    const std::string last = "silence of silent" + std::to_string(Links::OPENING_LIMIT);
    for (std::size_t i = 0; i < Links::OPENING_LIMIT; ++i)
        EXPECT_NE(next(), last);
    std::string word;
    while ((word = next()) != last)
        ASSERT_NE(word, "nothing");
}

TEST_F(LinksTest, PassEveryStateOfOneThatFloodsAndTheLastOfItsProperties)
{
    Corvane::Test::CapturedOutput log;
    server.init();
    connect();
    ASSERT_EQ(next(), "connected");
    ASSERT_EQ(next(), "state RUNNING");
    constexpr unsigned int COUNT = 2000;
    flood(COUNT);
    server.handleRPCNotification("IApplication::onStateChange", R"({"newState":"SUSPENDED"})");
    flood(COUNT);
    server.handleRPCNotification("IApplication::onStateChange", R"({"newState":"ABORTED"})");

    std::vector<std::string> states;
    std::vector<std::string> properties;
    const std::string end = R"(IApplication::onStateChange {"newState":"ABORTED"})";
    for (std::string word = next(); word != "disconnected" && word != "nothing"; word = next()) {
        (word.starts_with("IWindow::") ? properties : states).push_back(word);
        if (word == end)
            server.shutdown(); // what it has not sent by then is lost
    }
    EXPECT_THAT(states, testing::ElementsAre(HasSubstr("SUSPENDED"), end));
    EXPECT_LE(properties.size(), COUNT);
    EXPECT_EQ(properties.back(), "IWindow::onOpacityChange {\"newOpacity\":" + std::to_string(COUNT) + "}");
    EXPECT_THAT(log.getText(), HasSubstr("tester floods"));
}

TEST_F(LinksTest, EndWithAServerThatSaysWhatCannotBeUnderstoodAndTryItAgain)
{
    const Corvane::FileDescriptor strange = listenAs("strange", 8);
    connect("strange");
    for (int i = 0; i < 2; ++i) {
        const Corvane::FileDescriptor connection(accept(strange.get(), nullptr, nullptr));
        const std::string text = R"({"jsonrpc":"2.0","id":1,"result":null})"
                                 "\nnonsense\n";
        ASSERT_EQ(send(connection.get(), text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
        EXPECT_EQ(next(), "connected");
        EXPECT_EQ(next(), "disconnected");
    }
}

} // namespace Procmand
