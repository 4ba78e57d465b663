#include "history/StateLock.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <unistd.h>

namespace Procmand
{

TEST(StateLockTest, KeepsOthersOffTheFolderAndTellsWhoHasIt)
{
    const Corvane::Test::TemporaryDirectory directory;
    const std::string folder = directory.getPath() + "/box/state";
    auto first = std::make_unique<StateLock>(folder);
    try {
        const StateLock second(folder);
        FAIL() << "two have it";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "the state folder " + folder + " is in use by process " + std::to_string(getpid()));
    }

    first.reset();
    EXPECT_NO_THROW(StateLock{folder}) << "it is free again";
}

TEST(StateLockTest, WaitsForAProcessThatHasTheFolderForAMomentOnly)
{
    const Corvane::Test::TemporaryDirectory folder;
    Corvane::Test::ChildProcess holder(
        {"flock", folder.getPath() + "/lock", "sh", "-c", "echo has it; exec sleep 0.2"});
    ASSERT_TRUE(holder.awaitOutput("has it"));

    EXPECT_NO_THROW(StateLock{folder.getPath()});
}

TEST(StateLockTest, SaysThatTheFolderCannotBeUsed)
{
    EXPECT_THROW(StateLock("/proc/nowhere"), std::runtime_error);
}

} // namespace Procmand
