#include "InputFixture.h"

/// The seat of a device decides who hears it.
namespace Corvane::Test
{

class Seats : public InputTest
{
protected:
    Seats()
    {
        driver.addInputEventListener(&second, 2);
        enableAll();
    }

    InputRecorder second;
};

TEST_F(Seats, AreHeardByTheListenersOfTheirSessionAlone)
{
    MockDevice none(machine, infrared());
    MockDevice zero(machine, onSeat(infrared(), "seat0"));
    MockDevice two(machine, onSeat(infrared(), "seat2"));
    MockDevice three(machine, onSeat(infrared(), "seat3"));
    driver.start();

    three.press(KEY_3);
    two.press(KEY_2);
    EXPECT_EQ(second.take(), "KEY_2 pressed");
    zero.press(KEY_0);
    EXPECT_EQ(listener.take(), "KEY_0 pressed");
    none.press(KEY_1);
    EXPECT_EQ(listener.take(), "KEY_1 pressed");
    two.release(KEY_2);
    EXPECT_EQ(second.take(), "KEY_2 released");
    EXPECT_TRUE(listener.events.isEmpty());
    EXPECT_TRUE(second.events.isEmpty());
}

TEST_F(Seats, WithoutANumberAreLeftOutWithALine)
{
    CapturedOutput error;
    MockDevice kitchen(machine, onSeat(infrared(), "seat-kitchen"));
    MockDevice chair(machine, onSeat(infrared(), "chair1"));
    MockDevice huge(machine, onSeat(infrared(), "seat4294967296"));
    MockDevice other(machine, infrared());
    driver.start();
    other.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");

    EXPECT_FALSE(kitchen.isOpen() || chair.isOpen() || huge.isOpen());
    EXPECT_EQ(error.getMessages(), (Texts{kitchen.getNode() + " is left out: seat-kitchen is no seat of a session",
                                          chair.getNode() + " is left out: chair1 is no seat of a session",
                                          huge.getNode() + " is left out: seat4294967296 is no seat of a session"}));
}

TEST_F(Seats, OfTwoSessionsMayTypeAtTheSameTime)
{
    MockDevice one(machine, keyboard());
    MockDevice two(machine, onSeat(keyboard(), "seat2"));
    driver.start();

    one.press(KEY_LEFTSHIFT);
    two.press(KEY_A);
    one.press(KEY_A);

    EXPECT_EQ(listener.take(2), (Texts{"KEY_LEFTSHIFT pressed", "'A' pressed"}));
    EXPECT_EQ(second.take(), "'a' pressed");
}

} // namespace Corvane::Test
