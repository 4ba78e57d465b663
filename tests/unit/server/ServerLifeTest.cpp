#include "ServerFakes.h"

#include <corvane/common/RPCClient.h>
#include <support/Await.h>
#include <thread>

/// A server's life beside the threads that use it.
namespace Corvane::Test
{

class ServerLife : public WindowTest
{
protected:
    TemporaryRuntime runtime;
    ServedWindow window{{"program", "--application-type=player", "--authorization-token=w"}};
};

TEST_F(ServerLife, BeginsWithTheRegistrationAndThenTheName)
{
    APPRPCServer first(&window);
    first.init();
    APPRPCServer second(&window);
    journal.clear();

    EXPECT_THROW(second.init(), RPCError);

    EXPECT_EQ(journal.read(), (Journal::Entries{"window.addListener"}));
    EXPECT_EQ(RPCClient::listServers(), std::vector<std::string>{"APPw"});
}

TEST_F(ServerLife, EndsWithTheNameFree)
{
    {
        APPRPCServer server(&window);
        server.init();
    }
    EXPECT_TRUE(RPCClient::listServers().empty());
    APPRPCServer next(&window);
    EXPECT_NO_THROW(next.init());
}

TEST_F(ServerLife, EndsAfterTheHandlerThatRuns)
{
    Mailbox<bool> inHandler;
    Mailbox<bool> mayEnd;
    std::string result;
    RecordingWindowListener listener("a");
    window.addListener(&listener);
    listener.action = [&] {
        inHandler.put(true);
        bool ignored = false;
        mayEnd.take(ignored);
        // Were the destructor not waiting for this handler, it would have left the window's listeners in this time.
        await([] { return false; }, std::chrono::milliseconds(200));
        journal.add("handler ends");
    };
    auto server = std::make_unique<APPRPCServer>(&window);
    server->init();
    std::thread caller([&] {
        try {
            result = RPCClient("APPw").call("IWindow::setOpacity", R"({"opacity":1})");
        } catch (const RPCError& e) {
            result = e.what();
        }
    });
    bool ignored = false;
    inHandler.take(ignored);
    journal.clear();

    mayEnd.put(true);
    server.reset();

    caller.join();
    window.TestWindow::removeListener(&listener);
    EXPECT_EQ(journal.read(), (Journal::Entries{"handler ends", "window.removeListener"}));
}

TEST_F(ServerLife, SurvivesCallsWhileTheWindowTerminates)
{
    for (int round = 0; round < 50; ++round) {
        OpenServer server(&window);
        std::thread caller([&server] {
            for (int i = 0; i < 20; ++i)
                for (const char* method : {"getOpacity", "getZOrder", "getVisibility"})
                    call(server, "IWindow", method);
        });
        server.onStateChange("w", ILifecycleManagement::STATE_RUNNING, ILifecycleManagement::STATE_ABORTED);
        caller.join();

        EXPECT_EQ(callText(server, "IWindow", "getOpacity"), errorText("invalid proxy"));
    }
}

} // namespace Corvane::Test
