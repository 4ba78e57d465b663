#include "Characters.h"

#include <array>
#include <linux/input-event-codes.h>

namespace Corvane
{

namespace
{

struct Key {
    unsigned char plain = 0;
    unsigned char shifted = 0;
};

using Layout = std::array<Key, KEY_KPRIGHTPAREN + 1>;

/// Gives neighbouring keys the characters of two rows of equal length.
constexpr void addRow(Layout& layout, unsigned int first, const char* plain, const char* shifted)
{
    for (; *plain != '\0'; ++plain, ++shifted)
        layout[first++] = {static_cast<unsigned char>(*plain), static_cast<unsigned char>(*shifted)};
}

/// A key of the keypad: always its number or its sign, whatever Shift and Num Lock say.
constexpr void addPadKey(Layout& layout, unsigned int code, char character)
{
    layout[code] = {static_cast<unsigned char>(character), static_cast<unsigned char>(character)};
}

constexpr Layout makeLayout()
{
    Layout layout{};
    addRow(layout, KEY_1, "1234567890-=", "!@#$%^&*()_+");
    addRow(layout, KEY_Q, "qwertyuiop[]", "QWERTYUIOP{}");
    addRow(layout, KEY_A, "asdfghjkl;'`", "ASDFGHJKL:\"~");
    addRow(layout, KEY_BACKSLASH, "\\zxcvbnm,./", "|ZXCVBNM<>?");
    addRow(layout, KEY_SPACE, " ", " ");
    // The key beside the left Shift, which only keyboards with 102 keys have.
    addRow(layout, KEY_102ND, "<", ">");
    addRow(layout, KEY_KP7, "789-456+1230.", "789-456+1230.");
    addPadKey(layout, KEY_KPASTERISK, '*');
    addPadKey(layout, KEY_KPSLASH, '/');
    addPadKey(layout, KEY_KPEQUAL, '=');
    addPadKey(layout, KEY_KPCOMMA, ',');
    addPadKey(layout, KEY_KPLEFTPAREN, '(');
    addPadKey(layout, KEY_KPRIGHTPAREN, ')');
    return layout;
}

constexpr Layout LAYOUT = makeLayout();

} // namespace

unsigned char findCharacter(unsigned int code, bool shifted, bool capsLocked)
{
    if (code >= LAYOUT.size())
        return 0;
    const Key& key = LAYOUT[code];
    const bool isLetter = key.plain >= 'a' && key.plain <= 'z';
    // Shift undoes Caps Lock, and Caps Lock is for letters alone.
    return shifted != (capsLocked && isLetter) ? key.shifted : key.plain;
}

} // namespace Corvane
