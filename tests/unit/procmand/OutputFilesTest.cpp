#include "OutputFiles.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <support/TemporaryDirectory.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

using Stream = OutputFiles::Stream;

class OutputFilesTest : public testing::Test
{
protected:
    void print(const std::string& text)
    {
        ASSERT_EQ(write(error.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    Corvane::Test::TemporaryDirectory folder;
    OutputFiles files{folder.getPath() + "/output"};
    Corvane::FileDescriptor error = files.open("token", Stream::ERROR);
};

} // namespace

TEST_F(OutputFilesTest, KeepTheLastFourKibibytes)
{
    print(std::string(5000, 'x') + std::string(4000, 'y') + "\n");

    EXPECT_EQ(files.readTail("token"), std::string(95, 'x') + std::string(4000, 'y') + "\n");
    EXPECT_EQ(files.readTail("nobody"), "");
}

TEST_F(OutputFilesTest, GiveRoomBackAndKeepTheEnd)
{
    print(std::string(1024 * 1024, 'x'));
    print(std::string(4096, 'y'));
    files.trim();

    struct stat status {
    };
    ASSERT_EQ(fstat(error.get(), &status), 0);
    EXPECT_LE(status.st_blocks * 512, 256 * 1024);
    EXPECT_EQ(files.readTail("token"), std::string(4096, 'y'));
    print("z");
    EXPECT_EQ(files.readTail("token"), std::string(4095, 'y') + "z") << "its writer goes on";
}

TEST_F(OutputFilesTest, MayPassTwoGibibytes)
{
    constexpr std::uintmax_t LENGTH = std::uintmax_t{1} << 31;
    std::filesystem::resize_file(folder.getPath() + "/output/token.err", LENGTH - 1);
    print(std::string(1024 * 1024, 'x'));
    print(std::string(4096, 'y'));
    files.trim();

    EXPECT_EQ(files.readTail("token"), std::string(4096, 'y'));
    struct stat status {
    };
    ASSERT_EQ(fstat(error.get(), &status), 0);
    EXPECT_LE(status.st_blocks * 512, 256 * 1024);
    EXPECT_GE(static_cast<std::uintmax_t>(status.st_size), LENGTH);
}

TEST_F(OutputFilesTest, AreNotForOthersAndGoWithTheirApplication)
{
    const std::string path = folder.getPath() + "/output/token.err";
    struct stat status {
    };
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);

    files.open("token", Stream::OUTPUT);
    files.remove("token");
    EXPECT_TRUE(std::filesystem::is_empty(folder.getPath() + "/output"));
}

TEST_F(OutputFilesTest, BeginAnewWithEachProcess)
{
    print("old");
    files.open("token", Stream::ERROR);

    EXPECT_EQ(files.readTail("token"), "");
}

} // namespace Procmand
