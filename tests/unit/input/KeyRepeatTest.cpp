#include "KeyRepeat.h"

#include <gtest/gtest.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

std::optional<KeyRepeat> readRepeatWith(const char* value)
{
    const ScopedEnvironment environment("CORVANE_KEY_REPEAT", value);
    return readKeyRepeat();
}

} // namespace

TEST(KeyRepeat, IsThatOfTheEnvironment)
{
    CapturedOutput error;

    EXPECT_EQ(readRepeatWith("400,40"), (KeyRepeat{400, 40}));
    EXPECT_EQ(readRepeatWith("1,10000"), (KeyRepeat{1, 10000}));
    EXPECT_EQ(readRepeatWith("off"), (KeyRepeat{0, 0}));
    EXPECT_EQ(readRepeatWith(nullptr), std::nullopt);

    EXPECT_EQ(error.getText(), "");
}

TEST(KeyRepeat, IsTheKernelsWithOneLineWhenTheEnvironmentIsWrong)
{
    for (const char* value : {"", ",", "400", "400,", ",40", "0,40", "400,0", "10001,40", "400, 40", "400,40,1",
                              "-4,40", "OFF", "99999999999,1"}) {
        CapturedOutput error;
        EXPECT_EQ(readRepeatWith(value), std::nullopt) << value;
        EXPECT_EQ(error.getMessages(),
                  std::vector<std::string>{"CORVANE_KEY_REPEAT is \"" + std::string(value) +
                                           "\", and neither \"off\" nor a delay and a period in milliseconds such as "
                                           "400,40: keys repeat as the kernel lets them"});
    }
}

} // namespace Corvane::Test
