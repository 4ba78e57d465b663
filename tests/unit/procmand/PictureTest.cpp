#include "screen/CompositorPicture.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <support/TemporaryDirectory.h>

namespace Procmand
{
namespace
{

std::string contentOf(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(PictureTest, IsNotSavedThroughALinkThatSomebodyPlanted)
{
    const Corvane::Test::TemporaryDirectory folder;
    const std::string target = folder.getPath() + "/target";
    const std::string file = folder.getPath() + "/picture.png";
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, file + ".part");

    EXPECT_THROW(Picture(2, 2).save(file), std::runtime_error);
    EXPECT_EQ(contentOf(target), "precious");
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(PictureTest, TakesThePlaceOfALinkAndNotOfWhereItLeads)
{
    const Corvane::Test::TemporaryDirectory folder;
    const std::string target = folder.getPath() + "/target";
    const std::string file = folder.getPath() + "/picture.png";
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, file);

    Picture(2, 2).save(file);
    EXPECT_EQ(contentOf(target), "precious");
    EXPECT_FALSE(std::filesystem::is_symlink(file));
    EXPECT_EQ(contentOf(file).substr(1, 3), "PNG");
}

} // namespace Procmand
