#include "supervision/Supervisor.h"

#include <MemoryShortage.h>
#include <corvane/common/RPCServer.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Procmand
{
namespace
{

using Corvane::Test::await;
using Corvane::Test::MemoryShortage;

/// A supervisor that lacks memory, and an application whose process and server are the test's, which has enough.
class SupervisorWithoutMemory : public testing::Test
{
protected:
    SupervisorWithoutMemory()
    {
        server.init();
        std::lock_guard guard(box.lock);
        supervisor.start(runtime.directory.getPath());
        supervisor.adopt("tester", Process::find(child.getPid(), false).value());
    }
    ~SupervisorWithoutMemory() override
    {
        {
            std::lock_guard guard(box.lock);
            supervisor.disconnectAll();
        }
        box.workers.finish();
        box.loop.stop();
        looper.join();
        box.loop.discard();
    }

    /// Says something until it is passed on: while a link is made again, nobody listens.
    bool isHeard(const std::string& name, const std::string& payload)
    {
        const unsigned long before = passed;
        return await([&] {
            server.handleRPCNotification(name, payload);
            return passed > before;
        });
    }

    const MemoryShortage::Sparing sparing;
    Corvane::Test::TemporaryRuntime runtime;
    Corvane::Test::TemporaryDirectory state;
    Corvane::Test::ChildProcess child{{"sleep", "1000"}};
    Corvane::RPCServer server{"APPtester"};
    std::atomic<unsigned long> passed{0};
    Box box{Settings{.stateFolder = state.getPath(), .keepAliveDeadline = std::chrono::hours(1)},
            [this](const std::string&, const std::string&) { ++passed; }};
    FocusControl focus{box};
    WindowService windows{box};
    Supervisor supervisor{box, focus, windows};
    std::thread looper{[this] { box.loop.run(); }};
};

} // namespace

TEST_F(SupervisorWithoutMemory, GoesOnWhicheverAllocationFailsWhileItHearsAKeepAlive)
{
    const std::string name = "IApplication::onKeepAlive";
    const std::string payload = R"({"uid":"tester","state":"RUNNING"})";
    unsigned long failing = 0;
    for (;; ++failing) {
        ASSERT_TRUE(isHeard(name, payload)) << "allocation " << failing;
        MemoryShortage shortage(MemoryShortage::ONCE, failing);
        server.handleRPCNotification(name, payload);
        const unsigned long before = passed;
        // Either it was heard, or the link has ended and is made again.
        ASSERT_TRUE(await([&] {
            std::lock_guard guard(box.lock);
            return shortage.wasHit() || passed > before;
        }));
        if (!shortage.wasHit())
            break;
    }
    EXPECT_GT(failing, 5U);
}

} // namespace Procmand
