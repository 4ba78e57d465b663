#include "launch/OutputFiles.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
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
    void print(const std::string& text) const { print(run.error, text); }
    static void print(const Corvane::FileDescriptor& file, const std::string& text)
    {
        ASSERT_EQ(write(file.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    std::string readTail(Stream stream = Stream::ERROR) const { return files.readTail("token", stream); }
    /// What is in a file of the folder; "none" when it is not there.
    std::string read(const std::string& name) const
    {
        std::ifstream file(folder.getPath() + "/output/" + name);
        return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "none";
    }
    bool isEmpty() const { return std::filesystem::is_empty(folder.getPath() + "/output"); }

    Corvane::Test::TemporaryDirectory folder;
    OutputFiles files{folder.getPath() + "/output"};
    OutputFiles::Run run = files.beginRun("token");
};

} // namespace

TEST_F(OutputFilesTest, KeepTheLastFourKibibytes)
{
    print(std::string(5000, 'x') + std::string(4000, 'y') + "\n");

    EXPECT_EQ(readTail(), std::string(95, 'x') + std::string(4000, 'y') + "\n");
    EXPECT_EQ(files.readTail("nobody", Stream::ERROR), "");
}

TEST_F(OutputFilesTest, GiveRoomBackAndKeepTheEnd)
{
    print(std::string(1024 * 1024, 'x'));
    print(std::string(4096, 'y'));
    files.trim("token.err");

    struct stat status {
    };
    ASSERT_EQ(fstat(run.error.get(), &status), 0);
    EXPECT_LE(status.st_blocks * 512, 256 * 1024);
    EXPECT_EQ(readTail(), std::string(4096, 'y'));
    print("z");
    EXPECT_EQ(readTail(), std::string(4095, 'y') + "z") << "its writer goes on";
}

TEST_F(OutputFilesTest, MayPassTwoGibibytes)
{
    constexpr std::uintmax_t LENGTH = std::uintmax_t{1} << 31;
    std::filesystem::resize_file(folder.getPath() + "/output/token.err", LENGTH - 1);
    print(std::string(1024 * 1024, 'x'));
    print(std::string(4096, 'y'));
    files.trim("token.err");

    EXPECT_EQ(readTail(), std::string(4096, 'y'));
    struct stat status {
    };
    ASSERT_EQ(fstat(run.error.get(), &status), 0);
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

    print("old");
    files.beginRun("token");
    files.keepOnly({"another"});
    EXPECT_TRUE(isEmpty());
}

TEST_F(OutputFilesTest, AreKeptOfTheLastThreeRuns)
{
    for (const std::string name : {"one", "two", "three", "four"}) {
        print(run.output, name);
        print(run.error, "error of " + name);
        run = files.beginRun("token");
    }
    EXPECT_EQ(readTail(), "") << "each run begins anew";
    print("five");

    EXPECT_EQ(read("token.err"), "five");
    EXPECT_EQ(read("token.out"), "") << "the two belong together";
    EXPECT_EQ(read("token.out.1"), "four");
    EXPECT_EQ(read("token.err.1"), "error of four");
    EXPECT_EQ(read("token.out.2"), "three");
    EXPECT_EQ(read("token.out.3"), "none");
    EXPECT_EQ(read("token.err.3"), "none");
    files.keepOnly({"token"});
    EXPECT_EQ(read("token.out.2"), "three");
}

TEST_F(OutputFilesTest, AreNotPushedOutByRunsThatPrintNothing)
{
    print("something");
    for (int i = 0; i < 5; ++i)
        run = files.beginRun("token");

    EXPECT_EQ(read("token.err.1"), "something");
}

TEST_F(OutputFilesTest, StayInTheirFolderWhateverTheToken)
{
    const OutputFiles::Run other = files.beginRun("../a.out/b");
    print(other.output, "here");

    EXPECT_EQ(read("%2E%2E%2Fa%2Eout%2Fb.out"), "here");
    EXPECT_EQ(files.readTail("../a.out/b", Stream::OUTPUT), "here");
    files.keepOnly({"../a.out/b"});
    EXPECT_EQ(read("%2E%2E%2Fa%2Eout%2Fb.out"), "here");
    EXPECT_EQ(read("token.err"), "none");
}

} // namespace Procmand
