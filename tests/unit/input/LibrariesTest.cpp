#include <corvane/input/MultiInputDriver.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

namespace Corvane::Test
{
namespace
{

TEST(InputLibraries, ADriverThatReadsNoDeviceLoadsNoLibevdev)
{
    MultiInputDriver driver;

    EXPECT_EQ(dlopen("libevdev.so.2", RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_NE(dlopen("libudev.so.1", RTLD_NOW | RTLD_NOLOAD), nullptr) << "what is linked is found by such a question";
}

} // namespace
} // namespace Corvane::Test
