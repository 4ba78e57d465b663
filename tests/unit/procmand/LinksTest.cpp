#include "supervision/Links.h"

#include <corvane/common/RPCServer.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Procmand
{
namespace
{

using Corvane::Test::await;

/// A link to a control server of the test's own; the process ends while the link is being made.
class LinksTest : public testing::Test, private ILinkListener
{
protected:
    LinksTest()
    {
        server.init();
        std::lock_guard guard(box.lock);
        ManagedApplication& application = box.registry.add("tester");
        links.connect(application);
        application.end.emplace();
    }
    ~LinksTest() override
    {
        {
            std::lock_guard guard(box.lock);
            links.disconnect(box.registry.require("tester"));
        }
        box.workers.finish();
        box.loop.stop();
        looper.join();
        box.loop.discard();
    }

    bool isLinked()
    {
        std::lock_guard guard(box.lock);
        const ManagedApplication& application = box.registry.require("tester");
        return application.isConnected && !application.isConnecting;
    }

    Corvane::Test::TemporaryRuntime runtime;
    Corvane::Test::TemporaryDirectory state;
    Corvane::Test::Mailbox<std::string> heard;
    Corvane::RPCServer server{"APPtester"};
    Box box{Settings{.stateFolder = state.getPath()}, [](const std::string&, const std::string&) {}};
    Links links{box, *this};
    std::thread looper{[this] { box.loop.run(); }};

private:
    void onConnected(ManagedApplication&) override {}
    void onDisconnected(ManagedApplication&) override { heard.put("disconnected"); }
    void onSilence(ManagedApplication&) override {}
    void onNotification(ManagedApplication&, const std::string& name, const std::string& payload) override
    {
        heard.put(name + " " + payload);
    }
    void onState(ManagedApplication&, const std::string&, bool) override {}
};

} // namespace

TEST_F(LinksTest, AreMadeForTheLastWordsOfAProcessThatEndsMeanwhile)
{
    ASSERT_TRUE(await([this] { return isLinked(); }));
    server.handleRPCNotification("IApplication::onStateChange", R"({"newState":"ABORTED"})");
    server.shutdown();

    std::string text;
    ASSERT_TRUE(heard.take(text));
    EXPECT_EQ(text, R"(IApplication::onStateChange {"newState":"ABORTED"})");
    ASSERT_TRUE(heard.take(text));
    EXPECT_EQ(text, "disconnected");
}

} // namespace Procmand
