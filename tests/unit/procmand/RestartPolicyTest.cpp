#include "supervision/RestartPolicy.h"

#include <gtest/gtest.h>

namespace Procmand
{

using std::chrono::milliseconds;

TEST(RestartPolicy, RestartsWhatItsModeSays)
{
    EXPECT_FALSE(isRestartWanted(RestartMode::NEVER, true));
    EXPECT_FALSE(isRestartWanted(RestartMode::NEVER, false));
    EXPECT_TRUE(isRestartWanted(RestartMode::ON_FAILURE, true));
    EXPECT_FALSE(isRestartWanted(RestartMode::ON_FAILURE, false));
    EXPECT_TRUE(isRestartWanted(RestartMode::ALWAYS, true));
    EXPECT_TRUE(isRestartWanted(RestartMode::ALWAYS, false));
}

TEST(RestartPolicy, DoublesTheDelayUpToTheLongestAndStopsAtTheLimit)
{
    Settings settings;
    settings.restartDelay = milliseconds(100);
    settings.restartDelayLimit = milliseconds(350);
    settings.restartLimit = 4;

    EXPECT_EQ(findRestartDelay(0, settings), milliseconds(100));
    EXPECT_EQ(findRestartDelay(1, settings), milliseconds(200));
    EXPECT_EQ(findRestartDelay(2, settings), milliseconds(350));
    EXPECT_EQ(findRestartDelay(3, settings), milliseconds(350));
    EXPECT_EQ(findRestartDelay(4, settings), std::nullopt);
}

TEST(RestartPolicy, KeepsTheDelayInItsRangeHoweverLongTheRow)
{
    Settings settings;
    settings.restartLimit = 100000;

    EXPECT_EQ(findRestartDelay(99999, settings), settings.restartDelayLimit);
}

TEST(RestartPolicy, TellsModesByName)
{
    for (const RestartMode mode : {RestartMode::NEVER, RestartMode::ON_FAILURE, RestartMode::ALWAYS})
        EXPECT_EQ(findRestartMode(nameOf(mode)), mode);
    EXPECT_EQ(findRestartMode("sometimes"), std::nullopt);
}

} // namespace Procmand
