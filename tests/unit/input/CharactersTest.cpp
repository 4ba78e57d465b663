#include "Characters.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <set>
#include <string>

namespace Corvane::Test
{

namespace
{

/// The characters of a row of keys, in the order of their codes.
std::string row(unsigned int first, unsigned int last, bool shifted, bool capsLocked)
{
    std::string text;
    for (unsigned int code = first; code <= last; ++code)
        text += static_cast<char>(findCharacter(code, shifted, capsLocked));
    return text;
}

} // namespace

TEST(Characters, AreThoseOfTheUSLayout)
{
    EXPECT_EQ(row(KEY_1, KEY_EQUAL, false, false), "1234567890-=");
    EXPECT_EQ(row(KEY_Q, KEY_RIGHTBRACE, false, false), "qwertyuiop[]");
    EXPECT_EQ(row(KEY_A, KEY_GRAVE, false, false), "asdfghjkl;'`");
    EXPECT_EQ(row(KEY_BACKSLASH, KEY_SLASH, false, false), "\\zxcvbnm,./");
    EXPECT_EQ(row(KEY_1, KEY_EQUAL, true, false), "!@#$%^&*()_+");
    EXPECT_EQ(row(KEY_Q, KEY_RIGHTBRACE, true, false), "QWERTYUIOP{}");
    EXPECT_EQ(row(KEY_A, KEY_GRAVE, true, false), "ASDFGHJKL:\"~");
    EXPECT_EQ(row(KEY_BACKSLASH, KEY_SLASH, true, false), "|ZXCVBNM<>?");
    EXPECT_EQ(findCharacter(KEY_SPACE, true, true), ' ');
}

TEST(Characters, OfLettersAloneMindCapsLockAndShiftUndoesIt)
{
    EXPECT_EQ(row(KEY_1, KEY_EQUAL, false, true), "1234567890-=");
    EXPECT_EQ(row(KEY_Q, KEY_RIGHTBRACE, false, true), "QWERTYUIOP[]");
    EXPECT_EQ(row(KEY_A, KEY_GRAVE, true, true), "asdfghjkl:\"~");
}

TEST(Characters, OfTheKeypadAreItsNumbersAndSignsWhateverIsHeld)
{
    for (const bool held : {false, true}) {
        EXPECT_EQ(row(KEY_KP7, KEY_KPDOT, held, held), "789-456+1230.");
        EXPECT_EQ(findCharacter(KEY_KPASTERISK, held, held), '*');
        EXPECT_EQ(findCharacter(KEY_KPSLASH, held, held), '/');
        EXPECT_EQ(findCharacter(KEY_KPEQUAL, held, held), '=');
        EXPECT_EQ(findCharacter(KEY_KPCOMMA, held, held), ',');
        EXPECT_EQ(row(KEY_KPLEFTPAREN, KEY_KPRIGHTPAREN, held, held), "()");
    }
}

TEST(Characters, ArePrintingOnesAndAllOfThem)
{
    std::set<unsigned int> found;
    for (unsigned int code = 0; code <= KEY_MAX + 1; ++code)
        for (const bool shifted : {false, true})
            found.insert(findCharacter(code, shifted, false));

    EXPECT_EQ(found.erase(0), 1U);
    EXPECT_EQ(found.size(), static_cast<std::size_t>('~' - ' ' + 1));
    EXPECT_EQ(*found.begin(), static_cast<unsigned int>(' '));
    EXPECT_EQ(*found.rbegin(), static_cast<unsigned int>('~'));
}

} // namespace Corvane::Test
