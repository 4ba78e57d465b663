#include "PlainWindow.h"

#include <corvane/WindowExec.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
#include <support/Await.h>
#include <support/DriverThread.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

/// A window application that has ended by the time it would run.
class ShortWindow : public PlainWindow
{
public:
    using PlainWindow::PlainWindow;
    void init() override
    {
        PlainWindow::init();
        setState(STATE_TERMINATED);
    }
};

/// What a process holds.
struct Holdings {
    std::size_t threads;
    std::size_t descriptors;
    std::size_t heap; ///< bytes in use; 0 where a sanitizer keeps its own heap
};

/// The least that the heap grows by when a cycle loses a block: glibc has no smaller one, on any processor.
constexpr std::size_t SMALLEST_BLOCK = 16;

constexpr std::size_t WARM_UP = 10;
constexpr std::size_t CYCLES = 1000;

std::size_t entriesIn(const char* folder)
{
    const auto entries = std::filesystem::directory_iterator(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

Holdings currentHoldings()
{
    return {.threads = entriesIn("/proc/self/task"),
            .descriptors = entriesIn("/proc/self/fd"),
            .heap = mallinfo2().uordblks};
}

void startAndStop()
{
    std::string program = "cycle";
    std::string type = "--application-type=test";
    std::string token = "--authorization-token=cycle-0123456789abcdef";
    std::vector<char*> arguments{program.data(), type.data(), token.data(), nullptr};
    WindowExec exec(3, arguments.data());
    ShortWindow window(3, arguments.data());
    exec.run(&window);
}

TEST(WindowApplicationCycle, ThousandTimesHoldsNoMoreThanTen)
{
    TemporaryRuntime runtime;
    for (std::size_t i = 0; i < WARM_UP; ++i)
        startAndStop();
    // The input driver outlives its windows, and opens what it needs on its own thread, when that gets to it.
    ASSERT_TRUE(await(isDriverAsleep));
    const Holdings before = currentHoldings();
    for (std::size_t i = WARM_UP; i < CYCLES; ++i)
        startAndStop();

    ASSERT_TRUE(await(isDriverAsleep));
    // A thread that was joined stays in /proc for the moment that the kernel needs to take it down.
    EXPECT_TRUE(await([&] { return currentHoldings().threads <= before.threads; }));
    const Holdings after = currentHoldings();
    EXPECT_LE(after.descriptors, before.descriptors);
    // The C library's own tables may settle late, once; a loss in every cycle cannot hide in that.
    EXPECT_LT(after.heap, before.heap + (CYCLES - WARM_UP) * SMALLEST_BLOCK);
}

} // namespace

} // namespace Corvane::Test
