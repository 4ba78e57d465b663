#include "ScreenSize.h"

#include <gtest/gtest.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

std::string readWith(const char* value)
{
    const ScopedEnvironment environment("CORVANE_SCREEN_SIZE", value);
    const ISurfaceCompositing::Dimensions size = readScreenSize();
    return std::to_string(size.getWidth()) + "x" + std::to_string(size.getHeight());
}

} // namespace

TEST(ScreenSize, IsThatOfTheEnvironment)
{
    CapturedOutput error;

    EXPECT_EQ(readWith("1920x1080"), "1920x1080");
    EXPECT_EQ(readWith("1x65535"), "1x65535");

    EXPECT_EQ(error.getText(), "");
}

TEST(ScreenSize, IsTheUsualOneWithoutAWordFromAnybody)
{
    CapturedOutput error;

    EXPECT_EQ(readWith(nullptr), "1280x720");

    EXPECT_EQ(error.getText(), "");
}

TEST(ScreenSize, IsTheUsualOneWithOneLineWhenTheEnvironmentIsWrong)
{
    for (const char* value : {"", "x", "1920", "1920x", "x1080", "0x720", "1280x0", "65536x1", "1920*1080",
                              "19 20x1080", "1920x1080x", "-1x720", "99999999999x1"}) {
        CapturedOutput error;
        EXPECT_EQ(readWith(value), "1280x720") << value;
        EXPECT_EQ(error.getMessages(),
                  std::vector<std::string>{"CORVANE_SCREEN_SIZE is \"" + std::string(value) +
                                           "\", and not a size such as 1920x1080: the screen is taken for 1280x720"});
    }
}

} // namespace Corvane::Test
