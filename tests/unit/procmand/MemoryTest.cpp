#include "RunningSupervisor.h"

#include <MemoryShortage.h>
#include <gtest/gtest.h>
#include <support/Await.h>

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
    /// Says something until it is passed on: while a link is made again, nobody listens.
    bool isHeard(const std::string& name, const std::string& payload)
    {
        const unsigned long before = passed;
        return await([&] {
            running.server.handleRPCNotification(name, payload);
            return passed > before;
        });
    }

    const MemoryShortage::Sparing sparing;
    std::atomic<unsigned long> passed{0};
    RunningSupervisor running{Settings{.keepAliveDeadline = std::chrono::hours(1)},
                              [this](const std::string&, const std::string&) { ++passed; }};
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
        running.server.handleRPCNotification(name, payload);
        const unsigned long before = passed;
        // Either it was heard, or the link has ended and is made again.
        ASSERT_TRUE(await([&] {
            std::lock_guard guard(running.box.lock);
            return shortage.wasHit() || passed > before;
        }));
        if (!shortage.wasHit())
            break;
    }
    EXPECT_GT(failing, 5U);
}

} // namespace Procmand
