#include "EventTranslator.h"
#include "KeyboardLayout.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <string>
#include <support/CapturedOutput.h>
#include <support/EventText.h>
#include <utility>
#include <vector>

namespace Corvane::Test
{

namespace
{

/// A keyboard with the layout that the environment names, and what it types.
class LayoutTest : public ::testing::Test
{
protected:
    LayoutTest()
    {
        // What dead keys make of letters is that of no language in particular.
        for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"})
            unsetenv(name);
    }
    ~LayoutTest() override { unsetenv("CORVANE_KEYBOARD_LAYOUT"); }

    void use(const char* layout)
    {
        setenv("CORVANE_KEYBOARD_LAYOUT", layout, 1);
        layouts = std::make_unique<KeyboardLayout>();
        translator = makeKeyboard();
    }
    std::unique_ptr<EventTranslator> makeKeyboard()
    {
        auto made = std::make_unique<EventTranslator>(
            true, [this](const EventTranslator::EventPointer& event) { hear(*event); });
        made->setTyping(layouts->makeTyping());
        made->enable({.keys = true, .pointer = true});
        return made;
    }

    void key(unsigned int code, int value) { translator->handle(EV_KEY, code, value); }
    /// Presses and releases the keys one after the other. @return what they typed, in UTF-8, with keys in brackets
    std::string type(const std::vector<unsigned int>& codes)
    {
        for (const unsigned int code : codes) {
            key(code, 1);
            key(code, 0);
        }
        return takeText();
    }
    /// The same while another key is held, of which nothing is told.
    std::string typeWith(unsigned int modifier, const std::vector<unsigned int>& codes)
    {
        key(modifier, 1);
        takeText();
        const std::string typed = type(codes);
        key(modifier, 0);
        takeText();
        return typed;
    }
    std::string takeText()
    {
        released.clear();
        return std::exchange(pressed, {});
    }

    std::string pressed;  ///< what the presses gave
    std::string released; ///< and the releases
    std::unique_ptr<KeyboardLayout> layouts = std::make_unique<KeyboardLayout>();
    std::unique_ptr<EventTranslator> translator = makeKeyboard();

private:
    void hear(const IWindowEvent::InputEvent& event)
    {
        const auto* const ascii = dynamic_cast<const IWindowEvent::AsciiEvent*>(&event);
        const auto* const key = dynamic_cast<const IWindowEvent::KeyEvent*>(&event);
        std::string& text = (ascii != nullptr ? ascii->getPressed() : key->getPressed()) ? pressed : released;
        if (ascii != nullptr)
            text += static_cast<char>(ascii->getAsciiCode());
        else
            text += "[" + findKeyName(key->getKeyCode()) + "]";
    }
};

using LayoutOfKeyboards = LayoutTest;

/// Whether this process has loaded the library of the layouts.
bool hasLoadedTheLibrary()
{
    std::ifstream maps("/proc/self/maps");
    const std::string text(std::istreambuf_iterator<char>(maps), {});
    return text.find("libxkbcommon") != std::string::npos;
}

} // namespace

TEST_F(LayoutOfKeyboards, IsTheUSOneWhereNoneIsNamedAndLoadsNoLibrary)
{
    const bool wasLoaded = hasLoadedTheLibrary(); // by a test before, where several run in one process
    EXPECT_EQ(type({KEY_Z, KEY_SEMICOLON, KEY_MINUS}), "z;-");
    EXPECT_EQ(typeWith(KEY_RIGHTALT, {KEY_E}), "[KEY_E]");

    use("");
    EXPECT_EQ(type({KEY_Z}), "z");
    EXPECT_EQ(hasLoadedTheLibrary(), wasLoaded);
}

TEST_F(LayoutOfKeyboards, GivesAGermanUmlautsInUtf8AndWhatIsOnAltGr)
{
    use("de,nodeadkeys");

    EXPECT_EQ(type({KEY_Z, KEY_Y, KEY_SEMICOLON, KEY_MINUS, KEY_EQUAL}), "yzöß´");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_APOSTROPHE, KEY_7}), "Ä/");
    EXPECT_EQ(typeWith(KEY_RIGHTALT, {KEY_E, KEY_Q, KEY_7}), "€@{");
    EXPECT_TRUE(hasLoadedTheLibrary());
}

TEST_F(LayoutOfKeyboards, GivesEveryByteOfACharacterOnceAtThePressAtEachRepetitionAndAtTheRelease)
{
    use("de,nodeadkeys");

    key(KEY_SEMICOLON, 1);
    EXPECT_EQ(pressed, "ö");
    EXPECT_EQ(released, "");
    key(KEY_SEMICOLON, 2);
    EXPECT_EQ(pressed, "öö");
    key(KEY_SEMICOLON, 0);
    EXPECT_EQ(released, "ö");
}

TEST_F(LayoutOfKeyboards, ReleasesTheCharacterOfThePress)
{
    use("de,nodeadkeys");
    key(KEY_LEFTSHIFT, 1);
    key(KEY_SEMICOLON, 1);
    key(KEY_LEFTSHIFT, 0);
    takeText();

    key(KEY_SEMICOLON, 0);

    EXPECT_EQ(released, "Ö");
}

TEST_F(LayoutOfKeyboards, GivesAFrenchmanDigitsWithShiftAndADeadCircumflex)
{
    use("fr");

    EXPECT_EQ(type({KEY_Q, KEY_W, KEY_2, KEY_0}), "azéà");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_2, KEY_0}), "20");
    EXPECT_EQ(type({KEY_LEFTBRACE, KEY_E}), "ê");
    EXPECT_EQ(type({KEY_LEFTBRACE, KEY_SPACE}), "^");
}

TEST_F(LayoutOfKeyboards, GivesARussianCyrillicBesideASecondLayout)
{
    use("us+ru,,grp:ctrls_toggle");

    EXPECT_EQ(type({KEY_A}), "a");
    key(KEY_LEFTCTRL, 1);
    key(KEY_RIGHTCTRL, 1);
    key(KEY_RIGHTCTRL, 0);
    key(KEY_LEFTCTRL, 0);
    takeText();
    EXPECT_EQ(type({KEY_G, KEY_H, KEY_B}), "при");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_G}), "П");

    use("ru");
    EXPECT_EQ(type({KEY_G, KEY_H, KEY_B}), "при");
}

TEST_F(LayoutOfKeyboards, KeepsADeadKeyUntilItsLetterComes)
{
    use("de");

    key(KEY_EQUAL, 1);
    key(KEY_EQUAL, 2);
    key(KEY_EQUAL, 0);
    EXPECT_EQ(pressed + released, "");
    key(KEY_E, 1);
    EXPECT_EQ(pressed, "é");
    key(KEY_E, 0);
    EXPECT_EQ(released, "é");
    takeText();
    EXPECT_EQ(type({KEY_E}), "e");
}

TEST_F(LayoutOfKeyboards, PutsADeadKeyOnALetterWithShiftAndForgetsItAtACommand)
{
    use("de");

    EXPECT_EQ(type({KEY_EQUAL}), "");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_E}), "É");
    EXPECT_EQ(type({KEY_EQUAL, KEY_ENTER, KEY_E}), "[KEY_ENTER]e");
    EXPECT_EQ(type({KEY_EQUAL}), "");
    EXPECT_EQ(typeWith(KEY_LEFTCTRL, {KEY_C}), "[KEY_C]");
    EXPECT_EQ(type({KEY_E}), "e");
    // It does not go with every letter.
    EXPECT_EQ(type({KEY_EQUAL, KEY_Q}), "q");
}

TEST_F(LayoutOfKeyboards, ForgetsADeadKeyWhenTheKeysAreTurnedOff)
{
    use("de");
    type({KEY_EQUAL});

    translator->enable({});
    translator->enable({.keys = true});

    EXPECT_EQ(type({KEY_E}), "e");
}

TEST_F(LayoutOfKeyboards, TakesAComposeKeyForAnOption)
{
    use("us,,compose:menu");

    EXPECT_EQ(type({KEY_COMPOSE, KEY_O, KEY_E}), "œ");
}

TEST_F(LayoutOfKeyboards, LetsTheLanguageDecideWhatDeadKeysMake)
{
    use("us,intl");
    EXPECT_EQ(type({KEY_APOSTROPHE, KEY_C}), "ć");

    setenv("LANG", "pt_BR.UTF-8", 1);
    use("us,intl");
    EXPECT_EQ(type({KEY_APOSTROPHE, KEY_C}), "ç");
}

TEST_F(LayoutOfKeyboards, LeavesCommandsKeys)
{
    use("de");

    EXPECT_EQ(type({KEY_ENTER, KEY_TAB, KEY_BACKSPACE, KEY_ESC, KEY_DELETE, KEY_LEFT, KEY_F1, KEY_OK}),
              "[KEY_ENTER][KEY_TAB][KEY_BACKSPACE][KEY_ESC][KEY_DELETE][KEY_LEFT][KEY_F1][KEY_OK]");
    for (const unsigned int modifier : {KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTMETA})
        EXPECT_EQ(typeWith(modifier, {KEY_A}), "[KEY_A]");
    EXPECT_EQ(type({KEY_SPACE}), " ");
}

TEST_F(LayoutOfKeyboards, LocksLettersBeyondAsciiTooAndFollowsTheLight)
{
    use("de,nodeadkeys");

    type({KEY_CAPSLOCK});
    EXPECT_EQ(type({KEY_A, KEY_SEMICOLON, KEY_1}), "AÖ1");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_A}), "a");
    // It goes off at the press, and the light that follows the press turns nothing on again.
    key(KEY_CAPSLOCK, 1);
    translator->handle(EV_LED, LED_CAPSL, 0);
    key(KEY_CAPSLOCK, 0);
    takeText();
    EXPECT_EQ(type({KEY_SEMICOLON}), "ö");
    translator->handle(EV_LED, LED_CAPSL, 1);
    EXPECT_EQ(type({KEY_SEMICOLON}), "Ö");
    translator->handle(EV_LED, LED_CAPSL, 0);
    EXPECT_EQ(type({KEY_SEMICOLON}), "ö");
}

TEST_F(LayoutOfKeyboards, CountsAShiftButNoCapsLockThatIsDownAtFirst)
{
    use("de,nodeadkeys");
    translator->setDown(KEY_CAPSLOCK);
    translator->setDown(KEY_LEFTSHIFT);

    EXPECT_EQ(type({KEY_SEMICOLON}), "Ö");
    key(KEY_CAPSLOCK, 2);
    key(KEY_LEFTSHIFT, 0);
    takeText();
    EXPECT_EQ(type({KEY_SEMICOLON}), "ö");
}

TEST_F(LayoutOfKeyboards, GivesTheKeypadItsDigitsAndTheSignOfTheCountry)
{
    use("de,nodeadkeys");

    EXPECT_EQ(type({KEY_KP7, KEY_KPDOT, KEY_KPSLASH, KEY_KPENTER}), "7,/[KEY_KPENTER]");
    EXPECT_EQ(typeWith(KEY_LEFTSHIFT, {KEY_KP7}), "7");
}

TEST_F(LayoutOfKeyboards, IsSharedByKeyboardsThatKeepTheirOwnKeys)
{
    use("de");
    const std::unique_ptr<EventTranslator> other = makeKeyboard();
    other->handle(EV_KEY, KEY_EQUAL, 1);
    other->handle(EV_KEY, KEY_LEFTSHIFT, 1);
    takeText();

    EXPECT_EQ(type({KEY_E}), "e");
}

TEST_F(LayoutOfKeyboards, IsTheUSOneAfterALineWhereTheNamedOneIsUnknown)
{
    CapturedOutput error;
    use("de,nonsense");
    translator = makeKeyboard();

    EXPECT_EQ(type({KEY_Z}), "z");
    EXPECT_EQ(error.getMessages(),
              std::vector<std::string>{
                  "CORVANE_KEYBOARD_LAYOUT is \"de,nonsense\": XKB has no such layout; the US layout is used"});
}

TEST_F(LayoutOfKeyboards, TellsWhereTablesOfDeadKeysAreMissingAndLeavesThemKeys)
{
    CapturedOutput error;
    setenv("XLOCALEDIR", "/nowhere", 1);
    use("de");
    unsetenv("XLOCALEDIR");

    EXPECT_EQ(type({KEY_EQUAL, KEY_E}), "[KEY_EQUAL]e");
    EXPECT_EQ(
        error.getMessages(),
        std::vector<std::string>{"dead keys and Compose do nothing: there is no table of what they make of letters"});
}

} // namespace Corvane::Test
