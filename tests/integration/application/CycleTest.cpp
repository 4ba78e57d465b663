#include "PlainWindow.h"

#include <corvane/WindowExec.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
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

    bool operator==(const Holdings&) const = default;
};

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

std::ostream& operator<<(std::ostream& stream, const Holdings& holdings)
{
    return stream << holdings.threads << " threads, " << holdings.descriptors << " descriptors, " << holdings.heap
                  << " bytes";
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
    for (int i = 0; i < 10; ++i)
        startAndStop();
    const Holdings afterTen = currentHoldings();
    for (int i = 10; i < 1000; ++i)
        startAndStop();
    EXPECT_EQ(currentHoldings(), afterTen);
}

} // namespace

} // namespace Corvane::Test
