#include "RunningSupervisor.h"

#include <MemoryShortage.h>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
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
    void sayAlive(unsigned long number)
    {
        running.server.handleRPCNotification("IApplication::onKeepAlive",
                                             R"({"uid":"tester","state":"RUNNING","number":)" + std::to_string(number) +
                                                 "}");
    }
    /// Says it until it is passed on: while a link is made again, nobody listens.
    bool isHeard(unsigned long number)
    {
        return await([&] {
            sayAlive(number);
            return heard == number;
        });
    }

    const MemoryShortage::Sparing sparing;
    std::atomic<unsigned long> heard{0}; ///< the number that was passed on last
    RunningSupervisor running{Settings{.keepAliveDeadline = std::chrono::hours(1)},
                              [this](const std::string&, const std::string& payload) {
                                  const std::size_t key = payload.find(R"("number":)");
                                  if (key != payload.npos)
                                      heard = std::strtoul(payload.c_str() + payload.find(':', key) + 1, nullptr, 10);
                              }};
};

} // namespace

TEST_F(SupervisorWithoutMemory, GoesOnWhicheverAllocationFailsWhileItHearsAKeepAlive)
{
    unsigned long number = 0;
    unsigned long failing = 0;
    for (;; ++failing) {
        ASSERT_TRUE(isHeard(++number)) << "allocation " << failing;
        ++number;
        MemoryShortage shortage(MemoryShortage::ONCE, failing);
        sayAlive(number);
        // Either it was heard, or the link has ended and is made again.
        ASSERT_TRUE(await([&] { return shortage.wasHit() || heard == number; }));
        if (!shortage.wasHit())
            break;
    }
    EXPECT_GT(failing, 2U) << "there are allocations on the way";
}

} // namespace Procmand
