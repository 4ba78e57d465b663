#include "screen/Pictures.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <support/TemporaryDirectory.h>

namespace Procmand
{
namespace
{

using testing::Not;
using testing::StartsWith;

class PicturesTest : public testing::Test
{
protected:
    /// As many as there may be, all of them taken now.
    std::vector<std::string> fill()
    {
        std::vector<std::string> files;
        for (std::size_t i = 0; i < Pictures::LIMIT; ++i) {
            files.push_back(pictures.begin(now));
            std::ofstream(files.back()).close();
            pictures.onTaken(files.back(), now);
        }
        return files;
    }

    Corvane::Test::TemporaryDirectory folder;
    Pictures pictures{folder.getPath()};
    const Pictures::Clock::time_point now = Pictures::Clock::now();
};

} // namespace

TEST_F(PicturesTest, HaveNamesThatDoNotComeAgain)
{
    const std::string first = pictures.begin();
    EXPECT_THAT(first, StartsWith(folder.getPath() + "/screenshot-"));
    pictures.onFailure(first);
    EXPECT_NE(pictures.begin(), first);
    EXPECT_NE(Pictures(folder.getPath()).begin(), first) << "in another process manager";
}

TEST_F(PicturesTest, GoOldestFirstOnceTheyWereThereForAWhile)
{
    const std::vector<std::string> files = fill();
    EXPECT_THROW(pictures.begin(now + Pictures::KEEP_TIME - std::chrono::milliseconds(1)), std::runtime_error);
    EXPECT_TRUE(std::filesystem::exists(files[0])) << "somebody may just be reading it";

    pictures.begin(now + Pictures::KEEP_TIME);
    EXPECT_FALSE(std::filesystem::exists(files[0]));
    EXPECT_TRUE(std::filesystem::exists(files[1]));
}

TEST_F(PicturesTest, AreNotRemovedWhileTheyAreTaken)
{
    for (std::size_t i = 0; i < Pictures::LIMIT; ++i)
        pictures.begin(now);
    EXPECT_THROW(pictures.begin(now + std::chrono::hours(1)), std::runtime_error);
}

TEST_F(PicturesTest, TakeNoPlaceWhereTheyFailed)
{
    for (std::size_t i = 0; i < 2 * Pictures::LIMIT; ++i)
        EXPECT_NO_THROW(pictures.onFailure(pictures.begin(now)));
}

TEST_F(PicturesTest, OfEarlierProcessManagersAreRemovedAndNothingElse)
{
    for (const char* name : {"/screenshot-0.png", "/screenshot-1.png.part", "/ORU.sock"})
        std::ofstream(folder.getPath() + name).close();
    const Pictures next(folder.getPath());

    std::set<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(folder.getPath()))
        left.insert(entry.path().filename());
    EXPECT_EQ(left, std::set<std::string>{"ORU.sock"});
}

} // namespace Procmand
