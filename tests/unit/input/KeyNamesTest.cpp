#include <corvane/input/KeyNames.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace Corvane::Test
{

TEST(KeyNames, AreThoseOfTheLinuxHeaders)
{
    EXPECT_EQ(findKeyCode("KEY_OK"), KEY_OK);
    EXPECT_EQ(findKeyCode("KEY_ESC"), KEY_ESC);
    EXPECT_EQ(findKeyCode("KEY_0"), KEY_0);
    EXPECT_EQ(findKeyCode("BTN_LEFT"), BTN_LEFT);
    EXPECT_EQ(findKeyCode("BTN_TRIGGER_HAPPY40"), BTN_TRIGGER_HAPPY40);
}

TEST(KeyNames, MayBeTwoForOneKey)
{
    EXPECT_EQ(findKeyCode("KEY_ZOOM"), KEY_ZOOM);
    EXPECT_EQ(findKeyCode("KEY_FULL_SCREEN"), KEY_ZOOM);
    EXPECT_EQ(findKeyCode("KEY_SCREEN"), KEY_ASPECT_RATIO);
}

TEST(KeyNames, AreExact)
{
    for (const char* name : {"", "OK", "key_ok", "KEY_", "KEY_OKAY", "KEY_NONSENSE", "EV_KEY", "352"})
        EXPECT_FALSE(findKeyCode(name)) << name;
}

TEST(KeyNames, LeaveBoundsOut)
{
    for (const char* name : {"KEY_RESERVED", "KEY_MIN_INTERESTING", "KEY_MAX", "KEY_CNT"})
        EXPECT_FALSE(findKeyCode(name)) << name;
}

TEST(KeyNames, AreFoundByCodeTheProperOneOfSeveral)
{
    EXPECT_EQ(findKeyName(KEY_OK), "KEY_OK");
    EXPECT_EQ(findKeyName(KEY_FULL_SCREEN), "KEY_FULL_SCREEN");
    EXPECT_EQ(findKeyName(BTN_LEFT), "BTN_LEFT");
    EXPECT_EQ(findKeyName(BTN_SOUTH), "BTN_SOUTH");
    EXPECT_EQ(findKeyName(KEY_MUTE), "KEY_MUTE");
    EXPECT_EQ(findKeyName(0), "");
    EXPECT_EQ(findKeyName(KEY_MAX), "");
    EXPECT_EQ(findKeyName(0xFFFFFFFF), "");
}

TEST(KeyNames, LeadBackToTheirCodes)
{
    int count = 0;
    for (unsigned int code = 1; code < KEY_MAX; ++code) {
        const std::string name = findKeyName(code);
        if (name.empty())
            continue;
        ++count;
        EXPECT_EQ(findKeyCode(name), code) << name;
    }
    EXPECT_GT(count, 500);
}

} // namespace Corvane::Test
