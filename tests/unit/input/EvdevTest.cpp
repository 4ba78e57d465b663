#include "Evdev.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <system_error>

namespace Corvane::Test
{
namespace
{

TEST(Evdev, CallsTheFunctionOfTheLibrary)
{
    libevdev* device = nullptr;
    EXPECT_EQ(libevdev_new_from_fd(-1, &device), -EBADF);
    EXPECT_EQ(device, nullptr);
}

TEST(Evdev, AFunctionThatTheLibraryLacksIsAnErrorThatNamesIt)
{
    try {
        findInEvdev("libevdev_paint");
        FAIL() << "found";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ELIBACC);
        EXPECT_NE(std::string(error.what()).find("libevdev_paint"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace Corvane::Test
