#include <corvane/Version.h>
#include <gtest/gtest.h>
#include <string>

TEST(Version, IsTheSameAsATextAndInNumbers)
{
    EXPECT_EQ(CORVANE_VERSION, std::to_string(CORVANE_VERSION_MAJOR) + "." + std::to_string(CORVANE_VERSION_MINOR) +
                                   "." + std::to_string(CORVANE_VERSION_PATCH));
}
