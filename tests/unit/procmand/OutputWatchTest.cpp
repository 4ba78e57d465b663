#include "launch/OutputWatch.h"

#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/TemporaryDirectory.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

class OutputWatchTest : public testing::Test
{
protected:
    static void burst(const Corvane::FileDescriptor& file)
    {
        const std::string text(16 * 1024 * 1024, 'x');
        ASSERT_EQ(write(file.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    static bool becomesShort(const Corvane::FileDescriptor& file)
    {
        return Corvane::Test::await([&file] {
            struct stat status {
            };
            return fstat(file.get(), &status) == 0 &&
                   status.st_blocks * 512 <= static_cast<off_t>(OutputFiles::ROOM_LIMIT);
        });
    }

    Corvane::Test::TemporaryDirectory folder;
    OutputFiles files{folder.getPath() + "/output"};
    OutputFiles::Run run = files.beginRun("token");
};

} // namespace

TEST_F(OutputWatchTest, ShortensWhatIsPrintedWhenItIsPrinted)
{
    const OutputWatch watch(files);
    for (int i = 0; i < 3; ++i) {
        burst(run.error);
        burst(run.output);
        EXPECT_TRUE(becomesShort(run.error));
        EXPECT_TRUE(becomesShort(run.output));
    }
    // A process of an earlier run may live on.
    const OutputFiles::Run next = files.beginRun("token");
    burst(run.error);
    EXPECT_TRUE(becomesShort(run.error));
}

TEST_F(OutputWatchTest, ShortensWhatWasPrintedWhileNobodyWatched)
{
    burst(run.error);
    const OutputWatch watch(files);

    EXPECT_TRUE(becomesShort(run.error));
}

} // namespace Procmand
