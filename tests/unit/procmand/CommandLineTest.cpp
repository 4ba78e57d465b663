#include "CommandLine.h"

#include <gtest/gtest.h>

namespace Procmand
{
namespace
{

using namespace std::chrono_literals;

TEST(CommandLine, TakesSecondsToTheNearestMillisecond)
{
    std::string words[] = {
        "corvane-procmand", "--call-deadline", "0.29", "--kill-deadline", "1.001", "--stable-time", "86400"};
    char* arguments[std::size(words) + 1]{};
    for (std::size_t i = 0; i < std::size(words); ++i)
        arguments[i] = words[i].data();
    int exitCode = 0;

    const std::optional<Settings> settings = readCommandLine(std::size(words), arguments, exitCode);

    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->callDeadline, 290ms);
    EXPECT_EQ(settings->killDeadline, 1001ms);
    EXPECT_EQ(settings->stableTime, 24h);
}

} // namespace
} // namespace Procmand
