#include <corvane/input/DFBInputEvents.h>
#include <corvane/input/KeyNames.h>
#include <directfb.h>
#include <directfb_keynames.h>
#include <gtest/gtest.h>
#include <libevdev/libevdev.h>
#include <linux/input-event-codes.h>
#include <map>
#include <set>
#include <string>

namespace Corvane::Test
{

namespace
{

using Code = IWindowEvent::KeyEvent::Code;

DirectFBKeySymbolNames(SYMBOL_NAMES);
DirectFBKeyIdentifierNames(IDENTIFIER_NAMES);

std::string withoutUnderscores(std::string name)
{
    std::erase(name, '_');
    return name;
}

DFBInputDeviceKeySymbol symbolOf(Code code)
{
    return DFBInputEvents::getDirectFBKeySymbol(code);
}

DFBInputDeviceKeyIdentifier identifierOf(Code code)
{
    return DFBInputEvents::getDirectFBKeyIdentifier(code);
}

/// The counterparts of a key: DIKI_UNKNOWN and DIKS_NULL for none.
struct Counterpart {
    DFBInputDeviceKeyIdentifier identifier = DIKI_UNKNOWN;
    DFBInputDeviceKeySymbol symbol = DIKS_NULL;
};

/// By name, from the lists of names of Linux and of DirectFB: KEY_PAGEUP is DIKS_PAGE_UP. A letter is its small one.
std::map<Code, Counterpart> counterpartsByName()
{
    std::map<std::string, Counterpart> named;
    for (const DFBKeyIdentifierName& row : IDENTIFIER_NAMES)
        named[withoutUnderscores(row.name)].identifier = row.identifier;
    for (const DFBKeySymbolName& row : SYMBOL_NAMES)
        named[withoutUnderscores(row.name)].symbol = row.symbol;

    std::map<Code, Counterpart> result;
    for (Code code = 0; code <= KEY_MAX; ++code) {
        const char* name = libevdev_event_code_get_name(EV_KEY, code);
        if (name == nullptr || std::string(name).rfind("KEY_", 0) != 0 || code == KEY_UNKNOWN)
            continue;
        const std::string key = withoutUnderscores(name + 4);
        const auto found = named.find(key);
        if (found == named.end())
            continue;
        result[code] = found->second;
        if (key.size() == 1 && key >= "A")
            result[code].symbol = static_cast<DFBInputDeviceKeySymbol>(key[0] - 'A' + 'a');
    }
    return result;
}

/// Those whose names differ, the digits aside.
const std::map<Code, Counterpart> OTHER_NAMES = {
    {KEY_ENTER, {DIKI_ENTER, DIKS_RETURN}},
    {KEY_ESC, {DIKI_ESCAPE, DIKS_ESCAPE}},
    {KEY_MINUS, {DIKI_MINUS_SIGN, DIKS_MINUS_SIGN}},
    {KEY_EQUAL, {DIKI_EQUALS_SIGN, DIKS_EQUALS_SIGN}},
    {KEY_LEFTBRACE, {DIKI_BRACKET_LEFT, DIKS_SQUARE_BRACKET_LEFT}},
    {KEY_RIGHTBRACE, {DIKI_BRACKET_RIGHT, DIKS_SQUARE_BRACKET_RIGHT}},
    {KEY_APOSTROPHE, {DIKI_QUOTE_RIGHT, DIKS_APOSTROPHE}},
    {KEY_GRAVE, {DIKI_QUOTE_LEFT, DIKS_GRAVE_ACCENT}},
    {KEY_DOT, {DIKI_PERIOD, DIKS_PERIOD}},
    {KEY_102ND, {DIKI_LESS_SIGN, DIKS_LESS_THAN_SIGN}},
    {KEY_LEFTCTRL, {DIKI_CONTROL_L, DIKS_CONTROL}},
    {KEY_RIGHTCTRL, {DIKI_CONTROL_R, DIKS_CONTROL}},
    {KEY_LEFTSHIFT, {DIKI_SHIFT_L, DIKS_SHIFT}},
    {KEY_RIGHTSHIFT, {DIKI_SHIFT_R, DIKS_SHIFT}},
    {KEY_LEFTALT, {DIKI_ALT_L, DIKS_ALT}},
    {KEY_RIGHTALT, {DIKI_ALT_R, DIKS_ALTGR}},
    {KEY_LEFTMETA, {DIKI_META_L, DIKS_META}},
    {KEY_RIGHTMETA, {DIKI_META_R, DIKS_META}},
    {KEY_LEFT, {DIKI_LEFT, DIKS_CURSOR_LEFT}},
    {KEY_RIGHT, {DIKI_RIGHT, DIKS_CURSOR_RIGHT}},
    {KEY_UP, {DIKI_UP, DIKS_CURSOR_UP}},
    {KEY_DOWN, {DIKI_DOWN, DIKS_CURSOR_DOWN}},
    {KEY_LEFT_UP, {DIKI_UNKNOWN, DIKS_CURSOR_LEFT_UP}},
    {KEY_LEFT_DOWN, {DIKI_UNKNOWN, DIKS_CURSOR_LEFT_DOWN}},
    {KEY_RIGHT_UP, {DIKI_UNKNOWN, DIKS_CURSOR_UP_RIGHT}},
    {KEY_RIGHT_DOWN, {DIKI_UNKNOWN, DIKS_CURSOR_DOWN_RIGHT}},
    {KEY_SYSRQ, {DIKI_PRINT, DIKS_PRINT}},
    {KEY_KPASTERISK, {DIKI_KP_MULT, DIKS_ASTERISK}},
    {KEY_KPSLASH, {DIKI_KP_DIV, DIKS_SLASH}},
    {KEY_KPMINUS, {DIKI_KP_MINUS, DIKS_MINUS_SIGN}},
    {KEY_KPPLUS, {DIKI_KP_PLUS, DIKS_PLUS_SIGN}},
    {KEY_KPENTER, {DIKI_KP_ENTER, DIKS_ENTER}},
    {KEY_KPEQUAL, {DIKI_KP_EQUAL, DIKS_EQUALS_SIGN}},
    {KEY_KPDOT, {DIKI_KP_DECIMAL, DIKS_PERIOD}},
    {KEY_KPCOMMA, {DIKI_KP_SEPARATOR, DIKS_COMMA}},
    {KEY_KPJPCOMMA, {DIKI_KP_SEPARATOR, DIKS_COMMA}},
    {KEY_KPLEFTPAREN, {DIKI_UNKNOWN, DIKS_PARENTHESIS_LEFT}},
    {KEY_KPRIGHTPAREN, {DIKI_UNKNOWN, DIKS_PARENTHESIS_RIGHT}},
    {KEY_QUESTION, {DIKI_UNKNOWN, DIKS_QUESTION_MARK}},
    {KEY_DOLLAR, {DIKI_UNKNOWN, DIKS_DOLLAR_SIGN}},
    {KEY_NUMERIC_STAR, {DIKI_UNKNOWN, DIKS_ASTERISK}},
    {KEY_NUMERIC_POUND, {DIKI_UNKNOWN, DIKS_NUMBER_SIGN}},
    {KEY_NUMERIC_A, {DIKI_UNKNOWN, DIKS_CAPITAL_A}},
    {KEY_NUMERIC_B, {DIKI_UNKNOWN, DIKS_CAPITAL_B}},
    {KEY_NUMERIC_C, {DIKI_UNKNOWN, DIKS_CAPITAL_C}},
    {KEY_NUMERIC_D, {DIKI_UNKNOWN, DIKS_CAPITAL_D}},
    {KEY_COMPOSE, {DIKI_UNKNOWN, DIKS_MENU}},
    {KEY_CONTEXT_MENU, {DIKI_UNKNOWN, DIKS_MENU}},
    {KEY_ZOOM, {DIKI_UNKNOWN, DIKS_ZOOM}},
    {KEY_SCREEN, {DIKI_UNKNOWN, DIKS_SCREEN}},
    {KEY_CONFIG, {DIKI_UNKNOWN, DIKS_SETUP}},
    {KEY_CALC, {DIKI_UNKNOWN, DIKS_CALCULATOR}},
    {KEY_WWW, {DIKI_UNKNOWN, DIKS_INTERNET}},
    {KEY_EMAIL, {DIKI_UNKNOWN, DIKS_MAIL}},
    {KEY_BOOKMARKS, {DIKI_UNKNOWN, DIKS_FAVORITES}},
    {KEY_ONSCREEN_KEYBOARD, {DIKI_UNKNOWN, DIKS_KEYBOARD}},
    {KEY_EJECTCD, {DIKI_UNKNOWN, DIKS_EJECT}},
    {KEY_EJECTCLOSECD, {DIKI_UNKNOWN, DIKS_EJECT}},
    {KEY_NEXTSONG, {DIKI_UNKNOWN, DIKS_NEXT}},
    {KEY_PREVIOUSSONG, {DIKI_UNKNOWN, DIKS_PREVIOUS}},
    {KEY_STOPCD, {DIKI_UNKNOWN, DIKS_STOP}},
    {KEY_PLAYCD, {DIKI_UNKNOWN, DIKS_PLAY}},
    {KEY_PAUSECD, {DIKI_UNKNOWN, DIKS_PAUSE}},
    {KEY_HOMEPAGE, {DIKI_UNKNOWN, DIKS_HOME}},
    {KEY_ROOT_MENU, {DIKI_UNKNOWN, DIKS_MENU}},
    {KEY_MEDIA_TOP_MENU, {DIKI_UNKNOWN, DIKS_MENU}},
    {KEY_FASTREVERSE, {DIKI_UNKNOWN, DIKS_REWIND}},
    {KEY_SLOWREVERSE, {DIKI_UNKNOWN, DIKS_SLOW}},
    {KEY_STOP_RECORD, {DIKI_UNKNOWN, DIKS_STOP}},
    {KEY_PAUSE_RECORD, {DIKI_UNKNOWN, DIKS_PAUSE}},
    {KEY_DATA, {DIKI_UNKNOWN, DIKS_TEXT}},
    {KEY_NEXT_FAVORITE, {DIKI_UNKNOWN, DIKS_FAVORITES}},
    {KEY_CLOSECD, {DIKI_UNKNOWN, DIKS_EJECT}},
    {KEY_SLEEP, {DIKI_UNKNOWN, DIKS_POWER}},
    {KEY_VIDEOPHONE, {DIKI_UNKNOWN, DIKS_PHONE}},
    {KEY_PICKUP_PHONE, {DIKI_UNKNOWN, DIKS_CALL}},
    {BTN_SIDE, {DIKI_UNKNOWN, DIKS_BACK}},
    {BTN_BACK, {DIKI_UNKNOWN, DIKS_BACK}},
    {BTN_EXTRA, {DIKI_UNKNOWN, DIKS_FORWARD}},
    {BTN_FORWARD, {DIKI_UNKNOWN, DIKS_FORWARD}},
};

/// Those whose symbols are in no list of names: characters beyond ASCII, and more function keys than twelve.
std::map<Code, int> unnamedSymbols()
{
    std::map<Code, int> result = {{KEY_EURO, 0x20AC}, {KEY_YEN, 0xA5}, {KEY_KPPLUSMINUS, 0xB1}};
    for (int number = 13; number <= 24; ++number)
        result[KEY_F13 + static_cast<Code>(number) - 13] = DFB_FUNCTION_KEY(number);
    return result;
}

/// Whether DirectFB leaves the symbol to whoever wants it.
bool isCustom(int symbol)
{
    return symbol >= DFB_CUSTOM_KEY(0) && symbol <= DFB_CUSTOM_KEY(255);
}

/// Those and the digits of the keypad and of remote controls.
std::map<Code, Counterpart> otherCounterparts()
{
    std::map<Code, Counterpart> result = OTHER_NAMES;
    const Code keypad[] = {KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9};
    for (int digit = 0; digit <= 9; ++digit) {
        const auto symbol = static_cast<DFBInputDeviceKeySymbol>('0' + digit);
        result[KEY_NUMERIC_0 + digit] = {static_cast<DFBInputDeviceKeyIdentifier>(DIKI_0 + digit), symbol};
        result[keypad[digit]] = {static_cast<DFBInputDeviceKeyIdentifier>(DIKI_KP_0 + digit), symbol};
    }
    return result;
}

std::set<int> namedSymbols()
{
    std::set<int> result;
    for (const DFBKeySymbolName& row : SYMBOL_NAMES)
        result.insert(row.symbol);
    return result;
}

std::set<int> namedIdentifiers()
{
    std::set<int> result;
    for (const DFBKeyIdentifierName& row : IDENTIFIER_NAMES)
        result.insert(row.identifier);
    return result;
}

} // namespace

TEST(DFBInputEvents, KnowEveryKeyThatDirectFBKnowsByTheSameName)
{
    const auto others = otherCounterparts();
    const auto byName = counterpartsByName();
    EXPECT_GT(byName.size(), 160U) << "the lists of names are read";

    for (const auto& [code, counterpart] : byName) {
        if (others.contains(code))
            continue;
        const char* name = libevdev_event_code_get_name(EV_KEY, code);
        EXPECT_EQ(symbolOf(code), counterpart.symbol) << name;
        EXPECT_EQ(identifierOf(code), counterpart.identifier) << name;
    }
}

TEST(DFBInputEvents, KnowThoseThatHaveAnotherNameOrASymbolThatComesNear)
{
    auto counterparts = otherCounterparts();
    counterparts.merge(counterpartsByName());
    int identifiers = 0;
    for (Code code = 0; code <= KEY_MAX; ++code) {
        const auto expected = counterparts.find(code);
        EXPECT_EQ(identifierOf(code), expected == counterparts.end() ? DIKI_UNKNOWN : expected->second.identifier)
            << code;
        if (expected != counterparts.end()) {
            EXPECT_EQ(symbolOf(code), expected->second.symbol) << code;
        }
        identifiers += identifierOf(code) != DIKI_UNKNOWN ? 1 : 0;
    }
    for (const auto& [code, symbol] : unnamedSymbols())
        EXPECT_EQ(symbolOf(code), symbol) << code;
    EXPECT_EQ(counterparts.size(), 251U);
    EXPECT_EQ(identifiers, 118);
}

TEST(DFBInputEvents, GiveEachOtherKeyASymbolOfItsOwn)
{
    auto known = otherCounterparts();
    known.merge(counterpartsByName());
    std::set<int> given;
    int keys = 0;
    for (Code code = 1; code <= KEY_MAX; ++code) {
        if (known.contains(code) || unnamedSymbols().contains(code))
            continue;
        if (!findKeyName(code).starts_with("KEY_") || code == KEY_UNKNOWN) {
            EXPECT_EQ(symbolOf(code), DIKS_NULL) << code;
            continue;
        }
        EXPECT_TRUE(isCustom(symbolOf(code))) << findKeyName(code);
        given.insert(symbolOf(code));
        ++keys;
    }
    EXPECT_EQ(given.size(), static_cast<std::size_t>(keys));
    EXPECT_GT(keys, 200);
}

/// Programs may have stored these numbers.
TEST(DFBInputEvents, KeepTheNumbersOfTheSymbolsThatTheyGave)
{
    EXPECT_EQ(symbolOf(KEY_ZENKAKUHANKAKU), DFB_CUSTOM_KEY(0));
    EXPECT_EQ(symbolOf(KEY_SEARCH), DFB_CUSTOM_KEY(50));
    EXPECT_EQ(symbolOf(KEY_VOD), DFB_CUSTOM_KEY(180));
    EXPECT_EQ(symbolOf(KEY_KBD_LCD_MENU5), DFB_CUSTOM_KEY(239));
}

TEST(DFBInputEvents, KnowNoButtonAndNoCodeBeyondTheLast)
{
    for (const Code code : {Code{KEY_RESERVED}, Code{KEY_UNKNOWN}, Code{BTN_LEFT}, Code{KEY_MAX}, Code{KEY_CNT},
                            Code{0x10000 + KEY_A}, Code{0xFFFFFFFF}}) {
        EXPECT_EQ(symbolOf(code), DIKS_NULL) << code;
        EXPECT_EQ(identifierOf(code), DIKI_UNKNOWN) << code;
    }
}

TEST(DFBInputEvents, GiveOnlySymbolsAndIdentifiersThatDirectFBHasNamesFor)
{
    const std::set<int> symbols = namedSymbols();
    const std::set<int> identifiers = namedIdentifiers();
    for (Code code = 0; code <= KEY_MAX; ++code) {
        EXPECT_TRUE(symbols.contains(symbolOf(code)) || unnamedSymbols().contains(code)) << code;
        EXPECT_TRUE(identifiers.contains(identifierOf(code))) << code;
    }
    for (int ascii = 0; ascii < 256; ++ascii) {
        const auto character = static_cast<unsigned char>(ascii);
        EXPECT_TRUE(symbols.contains(DFBInputEvents::getDirectFBKeySymbol(character))) << ascii;
        EXPECT_TRUE(identifiers.contains(DFBInputEvents::getDirectFBKeyIdentifier(character))) << ascii;
    }
}

TEST(DFBInputEvents, LeaveNoSymbolOutButThoseThatNoKeyOfLinuxMeans)
{
    std::set<int> given;
    for (Code code = 0; code <= KEY_MAX; ++code)
        given.insert(symbolOf(code));
    for (int ascii = 0; ascii < 256; ++ascii)
        given.insert(DFBInputEvents::getDirectFBKeySymbol(static_cast<unsigned char>(ascii)));

    std::set<int> missing;
    for (const DFBKeySymbolName& row : SYMBOL_NAMES)
        if (!given.contains(row.symbol))
            missing.insert(row.symbol);
    std::set<int> expected = {DIKS_FAST,   DIKS_BEGIN, DIKS_PIP,  DIKS_SWAP,  DIKS_FREEZE, DIKS_SPEAKER,
                              DIKS_REDIAL, DIKS_FLASH, DIKS_HOLD, DIKS_SUPER, DIKS_HYPER};
    // An accent that waits for its letter is a matter of layouts.
    for (int accent = DIKS_DEAD_ABOVEDOT; accent <= DIKS_DEAD_VOICED_SOUND; ++accent)
        expected.insert(accent);
    std::erase_if(missing, isCustom);

    EXPECT_EQ(missing, expected);
}

TEST(DFBInputEvents, ACharacterIsItsOwnSymbolWhereDirectFBHasANameForIt)
{
    const std::set<int> symbols = namedSymbols();
    for (int ascii = 0; ascii < 256; ++ascii) {
        if (ascii == '\n')
            continue;
        const bool isNamed = ascii < 128 && symbols.contains(ascii);
        EXPECT_EQ(DFBInputEvents::getDirectFBKeySymbol(static_cast<unsigned char>(ascii)), isNamed ? ascii : DIKS_NULL)
            << ascii;
    }
    EXPECT_EQ(DFBInputEvents::getDirectFBKeySymbol(static_cast<unsigned char>('\n')), DIKS_RETURN);
}

TEST(DFBInputEvents, ACharactersKeyIsTheOneThatTypesItOnAUsKeyboard)
{
    // What each key types without Shift and with it, in the order of the identifiers.
    const std::map<DFBInputDeviceKeyIdentifier, std::string> keys = {{DIKI_0, "0)"},
                                                                     {DIKI_1, "1!"},
                                                                     {DIKI_2, "2@"},
                                                                     {DIKI_3, "3#"},
                                                                     {DIKI_4, "4$"},
                                                                     {DIKI_5, "5%"},
                                                                     {DIKI_6, "6^"},
                                                                     {DIKI_7, "7&"},
                                                                     {DIKI_8, "8*"},
                                                                     {DIKI_9, "9("},
                                                                     {DIKI_ESCAPE, "\x1B"},
                                                                     {DIKI_TAB, "\t"},
                                                                     {DIKI_ENTER, "\n\r"},
                                                                     {DIKI_SPACE, " "},
                                                                     {DIKI_BACKSPACE, "\b"},
                                                                     {DIKI_DELETE, "\x7F"},
                                                                     {DIKI_QUOTE_LEFT, "`~"},
                                                                     {DIKI_MINUS_SIGN, "-_"},
                                                                     {DIKI_EQUALS_SIGN, "=+"},
                                                                     {DIKI_BRACKET_LEFT, "[{"},
                                                                     {DIKI_BRACKET_RIGHT, "]}"},
                                                                     {DIKI_BACKSLASH, "\\|"},
                                                                     {DIKI_SEMICOLON, ";:"},
                                                                     {DIKI_QUOTE_RIGHT, "'\""},
                                                                     {DIKI_COMMA, ",<"},
                                                                     {DIKI_PERIOD, ".>"},
                                                                     {DIKI_SLASH, "/?"}};
    std::map<unsigned char, DFBInputDeviceKeyIdentifier> expected;
    for (const auto& [identifier, characters] : keys)
        for (const char character : characters)
            expected[static_cast<unsigned char>(character)] = identifier;
    for (int letter = 0; letter < 26; ++letter) {
        const auto identifier = static_cast<DFBInputDeviceKeyIdentifier>(DIKI_A + letter);
        expected[static_cast<unsigned char>('a' + letter)] = identifier;
        expected[static_cast<unsigned char>('A' + letter)] = identifier;
    }
    for (int ascii = 0; ascii < 256; ++ascii) {
        const auto character = static_cast<unsigned char>(ascii);
        const auto found = expected.find(character);
        EXPECT_EQ(DFBInputEvents::getDirectFBKeyIdentifier(character),
                  found == expected.end() ? DIKI_UNKNOWN : found->second)
            << ascii;
    }
}

} // namespace Corvane::Test
