#include <corvane/input/DFBInputEvents.h>

#include "DFBKeyRows.h"
#include <algorithm>
#include <array>

namespace Corvane
{

namespace
{

constexpr unsigned int ASCII_CODES = 128;

/// A key of a US keyboard and what it types, without Shift and with it; 0 for nothing of its own.
struct TypingKey {
    DFBInputDeviceKeyIdentifier identifier;
    unsigned char plain;
    unsigned char shifted;
};

constexpr TypingKey TYPING_KEYS[] = {
    {DIKI_BACKSPACE, '\b', 0},
    {DIKI_TAB, '\t', 0},
    {DIKI_ENTER, '\n', '\r'},
    {DIKI_ESCAPE, 0x1B, 0},
    {DIKI_SPACE, ' ', 0},
    {DIKI_DELETE, 0x7F, 0},
    {DIKI_1, '1', '!'},
    {DIKI_2, '2', '@'},
    {DIKI_3, '3', '#'},
    {DIKI_4, '4', '$'},
    {DIKI_5, '5', '%'},
    {DIKI_6, '6', '^'},
    {DIKI_7, '7', '&'},
    {DIKI_8, '8', '*'},
    {DIKI_9, '9', '('},
    {DIKI_0, '0', ')'},
    {DIKI_QUOTE_LEFT, '`', '~'},
    {DIKI_MINUS_SIGN, '-', '_'},
    {DIKI_EQUALS_SIGN, '=', '+'},
    {DIKI_BRACKET_LEFT, '[', '{'},
    {DIKI_BRACKET_RIGHT, ']', '}'},
    {DIKI_BACKSLASH, '\\', '|'},
    {DIKI_SEMICOLON, ';', ':'},
    {DIKI_QUOTE_RIGHT, '\'', '"'},
    {DIKI_COMMA, ',', '<'},
    {DIKI_PERIOD, '.', '>'},
    {DIKI_SLASH, '/', '?'},
};

constexpr auto IDENTIFIERS = [] {
    std::array<DFBInputDeviceKeyIdentifier, ASCII_CODES> identifiers{};
    identifiers.fill(DIKI_UNKNOWN);
    for (const TypingKey& key : TYPING_KEYS) {
        identifiers[key.plain] = key.identifier;
        identifiers[key.shifted] = key.identifier;
    }
    for (unsigned int letter = 0; letter < 26; ++letter)
        identifiers['a' + letter] = identifiers['A' + letter] =
            static_cast<DFBInputDeviceKeyIdentifier>(DIKI_A + letter);
    identifiers[0] = DIKI_UNKNOWN; // where the keys without a second character wrote theirs
    return identifiers;
}();

/// @return DIKS_NULL for a code that is no key
DFBInputDeviceKeySymbol findCustomSymbol(IWindowEvent::KeyEvent::Code code)
{
    const auto keys = getDFBCustomKeys();
    const auto key = std::ranges::find(keys, code);
    return key != keys.end() ? static_cast<DFBInputDeviceKeySymbol>(DFB_CUSTOM_KEY(key - keys.begin())) : DIKS_NULL;
}

DFBKeyRow find(IWindowEvent::KeyEvent::Code code)
{
    const auto rows = getDFBKeyRows();
    const auto row = std::ranges::lower_bound(rows, code, {}, &DFBKeyRow::code);
    return row != rows.end() && row->code == code ? *row : DFBKeyRow{code, DIKI_UNKNOWN, findCustomSymbol(code)};
}

} // namespace

DFBInputDeviceKeyIdentifier DFBInputEvents::getDirectFBKeyIdentifier(IWindowEvent::KeyEvent::Code code)
{
    return find(code).identifier;
}

DFBInputDeviceKeyIdentifier DFBInputEvents::getDirectFBKeyIdentifier(unsigned char ascii)
{
    return ascii < ASCII_CODES ? IDENTIFIERS[ascii] : DIKI_UNKNOWN;
}

DFBInputDeviceKeySymbol DFBInputEvents::getDirectFBKeySymbol(IWindowEvent::KeyEvent::Code code)
{
    return find(code).symbol;
}

DFBInputDeviceKeySymbol DFBInputEvents::getDirectFBKeySymbol(unsigned char ascii)
{
    switch (ascii) {
    case '\n':
        return DIKS_RETURN;
    case DIKS_BACKSPACE:
    case DIKS_TAB:
    case DIKS_RETURN:
    case DIKS_CANCEL:
    case DIKS_ESCAPE:
        return static_cast<DFBInputDeviceKeySymbol>(ascii);
    default:
        return ascii >= ' ' && ascii < ASCII_CODES ? static_cast<DFBInputDeviceKeySymbol>(ascii) : DIKS_NULL;
    }
}

} // namespace Corvane
