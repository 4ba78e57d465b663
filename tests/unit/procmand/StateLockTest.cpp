#include "history/StateLock.h"

#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <support/TemporaryDirectory.h>
#include <sys/file.h>
#include <thread>
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
    Corvane::FileDescriptor holder(open((folder.getPath() + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
    const auto release = std::async(std::launch::async, [&holder] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        holder.reset();
    });

    EXPECT_NO_THROW(StateLock{folder.getPath()});
}

TEST(StateLockTest, SaysThatTheFolderCannotBeUsed)
{
    EXPECT_THROW(StateLock("/proc/nowhere"), std::runtime_error);
}

} // namespace Procmand
