#include "EventTranslator.h"

#include <gtest/gtest.h>
#include <limits>
#include <linux/input-event-codes.h>
#include <string>
#include <support/EventText.h>
#include <utility>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Texts = std::vector<std::string>;

/// A translator whose events are kept in words.
class Translation : public ::testing::Test
{
protected:
    void key(unsigned int code, int value) { translator->handle(EV_KEY, code, value); }
    void press(unsigned int code) { key(code, 1); }
    void release(unsigned int code) { key(code, 0); }
    void move(unsigned int code, int value) { translator->handle(EV_REL, code, value); }
    void place(unsigned int code, int value) { translator->handle(EV_ABS, code, value); }
    void end() { translator->handle(EV_SYN, SYN_REPORT, 0); }
    Texts take() { return std::exchange(texts, {}); }

    std::unique_ptr<EventTranslator> makeTranslator(bool hasCharacters)
    {
        auto made = std::make_unique<EventTranslator>(
            hasCharacters, [this](const EventTranslator::EventPointer& event) { texts.push_back(eventText(*event)); });
        made->enable({.keys = true, .pointer = true});
        return made;
    }

    Texts texts;
    std::unique_ptr<EventTranslator> translator = makeTranslator(true);
};

using KeyTranslation = Translation;
using PointerTranslation = Translation;

} // namespace

TEST_F(KeyTranslation, GivesPressAndReleaseWithoutWaitingForTheEndOfTheFrame)
{
    press(KEY_ENTER);
    EXPECT_EQ(take(), Texts{"KEY_ENTER pressed"});

    release(KEY_ENTER);
    EXPECT_EQ(take(), Texts{"KEY_ENTER released"});
}

TEST_F(KeyTranslation, GivesARepetitionAsAPress)
{
    press(KEY_UP);
    key(KEY_UP, 2);
    release(KEY_UP);

    EXPECT_EQ(take(), (Texts{"KEY_UP pressed", "KEY_UP pressed", "KEY_UP released"}));
}

TEST_F(KeyTranslation, GivesEitherACharacterOrAKeyAndNeverBoth)
{
    for (unsigned int code : {KEY_A, KEY_SPACE, KEY_KP7, KEY_KPDOT, KEY_SLASH})
        press(code);
    EXPECT_EQ(take(), (Texts{"'a' pressed", "' ' pressed", "'7' pressed", "'.' pressed", "'/' pressed"}));

    for (unsigned int code : {KEY_ENTER, KEY_KPENTER, KEY_ESC, KEY_TAB, KEY_BACKSPACE, KEY_DELETE, KEY_F1, KEY_LEFT})
        press(code);
    EXPECT_EQ(take(), (Texts{"KEY_ENTER pressed", "KEY_KPENTER pressed", "KEY_ESC pressed", "KEY_TAB pressed",
                             "KEY_BACKSPACE pressed", "KEY_DELETE pressed", "KEY_F1 pressed", "KEY_LEFT pressed"}));
}

TEST_F(KeyTranslation, GivesKeysOnlyWhereThereAreNoCharacters)
{
    translator = makeTranslator(false);

    press(KEY_A);
    press(KEY_1);

    EXPECT_EQ(take(), (Texts{"KEY_A pressed", "KEY_1 pressed"}));
}

TEST_F(KeyTranslation, MindsEitherShift)
{
    for (unsigned int shift : {KEY_LEFTSHIFT, KEY_RIGHTSHIFT}) {
        press(shift);
        press(KEY_1);
        release(KEY_1);
        release(shift);
        const std::string name = findKeyName(shift);
        EXPECT_EQ(take(), (Texts{name + " pressed", "'!' pressed", "'!' released", name + " released"}));
    }
    press(KEY_1);
    EXPECT_EQ(take(), Texts{"'1' pressed"});
}

TEST_F(KeyTranslation, ReleasesTheCharacterThatItPressed)
{
    press(KEY_LEFTSHIFT);
    press(KEY_A);
    release(KEY_LEFTSHIFT);
    key(KEY_A, 2);
    release(KEY_A);

    EXPECT_EQ(take(),
              (Texts{"KEY_LEFTSHIFT pressed", "'A' pressed", "KEY_LEFTSHIFT released", "'A' pressed", "'A' released"}));
}

TEST_F(KeyTranslation, SwitchesCapsLockWithEachPressButNotWithItsRepetition)
{
    press(KEY_CAPSLOCK);
    key(KEY_CAPSLOCK, 2);
    release(KEY_CAPSLOCK);
    take();
    press(KEY_A);
    release(KEY_A);
    EXPECT_EQ(take(), (Texts{"'A' pressed", "'A' released"}));

    press(KEY_CAPSLOCK);
    release(KEY_CAPSLOCK);
    take();
    press(KEY_A);
    EXPECT_EQ(take(), Texts{"'a' pressed"});
}

TEST_F(KeyTranslation, FollowsTheLightOfCapsLock)
{
    translator->handle(EV_LED, LED_CAPSL, 1);
    press(KEY_B);
    translator->handle(EV_LED, LED_NUML, 0);
    press(KEY_C);
    translator->handle(EV_LED, LED_CAPSL, 0);
    press(KEY_D);

    EXPECT_EQ(take(), (Texts{"'B' pressed", "'C' pressed", "'d' pressed"}));
}

TEST_F(KeyTranslation, TakesAKeyWithCtrlAltOrMetaForACommand)
{
    for (unsigned int modifier :
         {KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT, KEY_RIGHTALT, KEY_LEFTMETA, KEY_RIGHTMETA}) {
        press(modifier);
        take();
        press(KEY_C);
        release(modifier);
        release(KEY_C);
        EXPECT_EQ(take(), (Texts{"KEY_C pressed", findKeyName(modifier) + " released", "KEY_C released"}));
    }
}

TEST_F(KeyTranslation, DropsTheReleaseOfAKeyThatItDidNotSeePressed)
{
    release(KEY_OK);
    release(KEY_A);

    EXPECT_EQ(take(), Texts{});
}

TEST_F(KeyTranslation, TakesARepetitionOfAKeyThatItDidNotSeePressedForAPress)
{
    key(KEY_A, 2);
    release(KEY_A);

    EXPECT_EQ(take(), (Texts{"'a' pressed", "'a' released"}));
}

TEST_F(KeyTranslation, MindsAShiftThatWasDownAlreadyUntilItIsReleased)
{
    for (const unsigned int shift : {KEY_LEFTSHIFT, KEY_RIGHTSHIFT}) {
        translator->setDown(shift);
        press(KEY_A);
        release(shift);
        press(KEY_B);
        EXPECT_EQ(take(), (Texts{"'A' pressed", "'b' pressed"}));
        release(KEY_A);
        release(KEY_B);
        take();
    }
}

TEST_F(KeyTranslation, TellsAKeyThatWasDownAlreadyOnceItIsPressedOrRepeats)
{
    translator->setDown(KEY_OK);
    translator->setDown(KEY_A);
    translator->setDown(KEY_UP);
    EXPECT_EQ(take(), Texts{});

    press(KEY_OK);
    key(KEY_A, 2);
    release(KEY_OK);
    release(KEY_A);
    release(KEY_UP);
    EXPECT_EQ(take(), (Texts{"KEY_OK pressed", "'a' pressed", "KEY_OK released", "'a' released"}));
}

TEST_F(KeyTranslation, ForgetsAKeyThatWasDownAlreadyWhenItIsTurnedOff)
{
    translator->setDown(KEY_LEFTSHIFT);
    translator->enable({.pointer = true});
    translator->enable({.keys = true});

    press(KEY_A);

    EXPECT_EQ(take(), Texts{"'a' pressed"});
}

TEST_F(KeyTranslation, KeepsCapsLockWhenTheKeyWasDownAlreadyAndRepeats)
{
    translator->setCapsLock(true);
    translator->setDown(KEY_CAPSLOCK);
    key(KEY_CAPSLOCK, 2);
    key(KEY_CAPSLOCK, 2);
    release(KEY_CAPSLOCK);
    take();

    press(KEY_A);

    EXPECT_EQ(take(), Texts{"'A' pressed"});
}

TEST_F(KeyTranslation, IgnoresCodesAndValuesOutOfRange)
{
    press(KEY_RESERVED);
    press(KEY_MAX + 1);
    press(std::numeric_limits<unsigned int>::max());
    for (int value : {-1, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        key(KEY_A, value);
    translator->handle(EV_MSC, MSC_SCAN, 7);
    translator->handle(EV_MAX + 1, 0, 1);
    translator->handle(EV_SYN, SYN_CONFIG, 0);
    translator->handle(EV_REL, REL_MAX, 1);
    translator->handle(EV_ABS, ABS_MAX, 1);
    end();

    EXPECT_EQ(take(), Texts{});
}

TEST_F(KeyTranslation, ReleasesAllThatIsHeldWhenItIsTurnedOffAndNothingTwice)
{
    press(KEY_LEFTSHIFT);
    press(KEY_A);
    press(KEY_OK);
    press(BTN_RIGHT);
    end();
    take();

    translator->enable({});
    EXPECT_EQ(take(), (Texts{"'A' released", "KEY_LEFTSHIFT released", "KEY_OK released", "mouse right released"}));

    translator->enable({.keys = true, .pointer = true});
    release(KEY_A);
    EXPECT_EQ(take(), Texts{});
}

TEST_F(KeyTranslation, EndsWithTheKeysThatAreTurnedOffWhileThePointerGoesOn)
{
    press(KEY_A);
    press(BTN_SIDE);
    press(BTN_LEFT);
    move(REL_X, 2);
    take();

    translator->enable({.pointer = true});
    EXPECT_EQ(take(), (Texts{"mouse left pressed by 2,0,0", "'a' released"}));

    release(KEY_A);
    press(KEY_B);
    release(BTN_SIDE);
    move(REL_X, 3);
    end();
    EXPECT_EQ(take(), (Texts{"BTN_SIDE released", "mouse left held by 3,0,0"}));
}

TEST_F(PointerTranslation, EndsWithThePointerThatIsTurnedOffWhileTheKeysGoOn)
{
    translator->setAbsolute({0, 9, 0}, {0, 9, 0}, {10, 10});
    press(KEY_A);
    press(BTN_LEFT);
    press(BTN_SIDE);
    end();
    move(REL_X, 2);
    take();

    translator->enable({.keys = true});
    EXPECT_EQ(take(), (Texts{"BTN_SIDE released", "mouse left released"}));

    move(REL_X, 2);
    place(ABS_X, 3);
    press(BTN_RIGHT);
    press(BTN_EXTRA);
    end();
    release(KEY_A);
    EXPECT_EQ(take(), Texts{"'a' released"});
}

TEST_F(PointerTranslation, GivesOneEventAFrame)
{
    move(REL_X, 3);
    move(REL_Y, -2);
    press(BTN_LEFT);
    move(REL_X, 4);
    EXPECT_EQ(take(), Texts{});

    end();
    EXPECT_EQ(take(), Texts{"mouse left pressed by 7,-2,0"});

    end();
    EXPECT_EQ(take(), Texts{});
}

TEST_F(PointerTranslation, KeepsItsOrderAmongTheKeysOfAFrame)
{
    press(BTN_LEFT);
    move(REL_X, 1);
    press(KEY_LEFTCTRL);
    move(REL_X, 2);
    press(BTN_SIDE);
    release(BTN_LEFT);
    end();

    EXPECT_EQ(take(), (Texts{"mouse left pressed by 1,0,0", "KEY_LEFTCTRL pressed", "mouse left held by 2,0,0",
                             "BTN_SIDE pressed", "mouse left released"}));
}

TEST_F(PointerTranslation, TellsButtonsThatChangedFromThoseThatAreHeld)
{
    press(BTN_LEFT);
    end();
    press(BTN_MIDDLE);
    press(BTN_RIGHT);
    end();
    release(BTN_LEFT);
    end();
    move(REL_X, 1);
    end();

    EXPECT_EQ(take(), (Texts{"mouse left pressed", "mouse left held middle pressed right pressed",
                             "mouse left released middle held right held", "mouse middle held right held by 1,0,0"}));
}

TEST_F(PointerTranslation, IgnoresAButtonThatSaysTheSameAgain)
{
    press(BTN_LEFT);
    end();
    take();

    press(BTN_LEFT);
    key(BTN_LEFT, 2);
    end();
    release(BTN_RIGHT);
    end();

    EXPECT_EQ(take(), Texts{});
}

TEST_F(PointerTranslation, LosesNoClickWithinOneFrame)
{
    press(BTN_LEFT);
    release(BTN_LEFT);
    end();

    EXPECT_EQ(take(), (Texts{"mouse left pressed", "mouse left released"}));
}

TEST_F(PointerTranslation, CountsEachStepOfTheWheelOnce)
{
    move(REL_WHEEL, 1);
    move(REL_WHEEL_HI_RES, 120);
    end();
    move(REL_WHEEL, -2);
    move(REL_WHEEL_HI_RES, -240);
    end();

    EXPECT_EQ(take(), (Texts{"mouse by 0,0,-1", "mouse by 0,0,2"}));
}

TEST_F(PointerTranslation, GivesTheStepsOfAHorizontalWheelAndOfAKnobAsKeys)
{
    move(REL_HWHEEL, 2);
    move(REL_HWHEEL_HI_RES, 240);
    end();
    EXPECT_EQ(take(), (Texts{"KEY_RIGHT pressed", "KEY_RIGHT released", "KEY_RIGHT pressed", "KEY_RIGHT released"}));
    move(REL_HWHEEL, -1);
    end();
    EXPECT_EQ(take(), (Texts{"KEY_LEFT pressed", "KEY_LEFT released"}));

    move(REL_DIAL, 1);
    move(REL_DIAL, -1);
    end();
    EXPECT_EQ(take(), (Texts{"KEY_VOLUMEUP pressed", "KEY_VOLUMEUP released", "KEY_VOLUMEDOWN pressed",
                             "KEY_VOLUMEDOWN released"}));
}

TEST_F(PointerTranslation, GivesNoMoreThanAHandfulOfKeysForAnyStepThatAKnobMaySay)
{
    for (const int steps : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        move(REL_DIAL, steps);
        end();
        EXPECT_EQ(take().size(), 32U);
    }
}

TEST_F(PointerTranslation, ReleasesAKeyOnceThatAKnobPressesWhileItIsHeld)
{
    press(KEY_VOLUMEUP);
    move(REL_DIAL, 1);
    release(KEY_VOLUMEUP);

    EXPECT_EQ(take(), (Texts{"KEY_VOLUMEUP pressed", "KEY_VOLUMEUP pressed", "KEY_VOLUMEUP released"}));
}

TEST_F(PointerTranslation, StopsAtTheEndsOfTheRangeOfNumbers)
{
    for (int i = 0; i < 3; ++i) {
        move(REL_X, std::numeric_limits<int>::max());
        move(REL_Y, std::numeric_limits<int>::min());
        move(REL_WHEEL, std::numeric_limits<int>::min());
    }
    end();

    EXPECT_EQ(take(), Texts{"mouse by 2147483647,-2147483648,2147483647"});
}

TEST_F(PointerTranslation, ScalesAPositionToTheScreen)
{
    translator->setAbsolute({-100, 100, 0}, {0, 32767, 16384}, {1280, 720});

    place(ABS_X, -100);
    end();
    place(ABS_X, 100);
    place(ABS_Y, 32767);
    end();
    place(ABS_X, 1000);
    place(ABS_Y, -1000);
    end();

    // The axis that was not reported is where it was.
    EXPECT_EQ(take(), (Texts{"mouse at 0,360", "mouse at 1279,719", "mouse at 1279,0"}));
}

TEST_F(PointerTranslation, FindsEachPlaceOfAScreenAgainHoweverItWasScaledToTheAxis)
{
    constexpr int RANGE = 32767;
    constexpr int WIDTH = 1920;
    constexpr int HEIGHT = 1080;
    translator->setAbsolute({0, RANGE, 0}, {-RANGE, 0, 0}, {WIDTH, HEIGHT});

    for (int column = 0; column < WIDTH; ++column) {
        const int row = column * (HEIGHT - 1) / (WIDTH - 1);
        // One axis is rounded down and the other up.
        place(ABS_X, column * RANGE / (WIDTH - 1));
        place(ABS_Y, row * RANGE / (HEIGHT - 1) - RANGE + (row % (HEIGHT - 1) != 0 ? 1 : 0));
        end();
        ASSERT_EQ(take(), Texts{"mouse at " + std::to_string(column) + "," + std::to_string(row)});
    }
}

TEST_F(PointerTranslation, HasThePositionAndTheWheelInOneEvent)
{
    translator->setAbsolute({0, 9, 0}, {0, 9, 0}, {10, 10});

    place(ABS_X, 5);
    move(REL_WHEEL, -1);
    end();
    move(REL_WHEEL, -1);
    end();
    press(BTN_LEFT);
    end();

    EXPECT_EQ(take(), (Texts{"mouse at 5,0 by 0,0,1", "mouse by 0,0,1", "mouse left pressed"}));
}

TEST_F(PointerTranslation, HasNoPositionWithoutAbsoluteAxes)
{
    place(ABS_X, 5);
    end();

    EXPECT_EQ(take(), Texts{});
}

TEST_F(PointerTranslation, DropsMovementButNoButtonWhenEventsWereLostInAFrame)
{
    translator->setAbsolute({0, 9, 0}, {0, 9, 0}, {10, 10});
    move(REL_X, 5);
    place(ABS_X, 5);
    press(BTN_LEFT);

    translator->handle(EV_SYN, SYN_DROPPED, 0);
    EXPECT_EQ(take(), Texts{"mouse left pressed"});

    end();
    EXPECT_EQ(take(), Texts{});
}

} // namespace Corvane::Test
