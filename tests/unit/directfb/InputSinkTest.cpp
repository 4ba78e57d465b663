#include "DebugLines.h"
#include "FakeDirectFB.h"
#include <corvane/DFBInputSink.h>
#include <corvane/foundation/Exception.h>
#include <corvane/input/DFBInputEvents.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <gmock/gmock.h>
#include <linux/input-event-codes.h>
#include <optional>
#include <typeinfo>

namespace Corvane::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using KeyEvent = IWindowEvent::KeyEvent;
using AsciiEvent = IWindowEvent::AsciiEvent;
using MouseEvent = IWindowEvent::MouseEvent;
using Buttons = MouseEvent::Buttons;
using Movement = MouseEvent::Movement;
using Position = MouseEvent::Position;

// DirectFB's numbers, as they go into the event buffer.
constexpr int INPUT_CLASS = 1;
constexpr int KEY_PRESS = 1;
constexpr int KEY_RELEASE = 2;
constexpr int BUTTON_PRESS = 3;
constexpr int BUTTON_RELEASE = 4;
constexpr int AXIS_MOTION = 5;
constexpr int LEFT = 0;
constexpr int RIGHT = 1;
constexpr int MIDDLE = 2;
constexpr int X = 0;
constexpr int Y = 1;
constexpr int Z = 2;
constexpr int ABSOLUTE_FLAG = 2;
constexpr int RELATIVE_FLAG = 4;
constexpr int BUTTONS_FLAG = 0x100;

/// A button or axis event in numbers: type, button or axis, movement, flags.
struct Posted {
    int type;
    int which;
    int axisrel;
    int flags;

    bool operator==(const Posted&) const = default;
};

void PrintTo(const Posted& posted, std::ostream* stream)
{
    *stream << "{type " << posted.type << ", which " << posted.which << ", axisrel " << posted.axisrel << ", flags "
            << posted.flags << "}";
}

Posted posted(const DFBEvent& event)
{
    const DFBInputEvent& input = event.input;
    const bool isAxis = input.type == DIET_AXISMOTION;
    return {input.type, isAxis ? static_cast<int>(input.axis) : static_cast<int>(input.button),
            isAxis ? input.axisrel : 0, input.flags};
}

/// An event that bears any type name, whatever class it is of.
template <class Base>
class NamedAs : public Base
{
public:
    template <class... Arguments>
    explicit NamedAs(const std::string& name, Arguments... arguments) : Base(arguments...), name(name)
    {
    }
    std::string getTypeName() const override { return name; }

private:
    const std::string name;
};

/// An event of the application's own.
class OtherEvent : public Event
{
public:
    std::string getTypeName() const override { return "FocusEvent"; }
    std::unique_ptr<SerialObject> clone() const override { return nullptr; }
    using SerialObject::serialize;
    void serialize(Serializer&) const override {}
};

class DFBInputSinkTest : public ::testing::Test
{
protected:
    /// What the buffer gets for a mouse event.
    std::vector<Posted> dispatch(const MouseEvent& event)
    {
        dfb.buffer.posted.clear();
        sink.dispatchEvent(event);
        std::vector<Posted> result;
        for (const DFBEvent& event : dfb.buffer.posted) {
            EXPECT_EQ(static_cast<int>(event.clazz), INPUT_CLASS);
            EXPECT_EQ(event.input.device_id, 1U);
            result.push_back(posted(event));
        }
        return result;
    }

    void expectKey(const Event& event, int type, DFBInputDeviceKeyIdentifier identifier, DFBInputDeviceKeySymbol symbol)
    {
        dfb.buffer.posted.clear();
        sink.dispatchEvent(event);
        ASSERT_EQ(dfb.buffer.posted.size(), 1U);
        const DFBInputEvent& input = dfb.buffer.posted[0].input;
        EXPECT_EQ(static_cast<int>(input.clazz), INPUT_CLASS);
        EXPECT_EQ(static_cast<int>(input.type), type);
        EXPECT_EQ(static_cast<int>(input.flags), 0) << "none, although identifier and symbol are filled";
        EXPECT_EQ(static_cast<int>(input.modifiers), 0);
        EXPECT_EQ(input.key_id, identifier);
        EXPECT_EQ(input.key_symbol, symbol);
    }

    FakeDirectFB dfb;
    DFBInputSink sink{&dfb};
};

} // namespace

TEST_F(DFBInputSinkTest, CreatesAGlobalBufferForEverything)
{
    EXPECT_THAT(dfb.calls, ElementsAre("CreateInputEventBuffer(7,1)"));
    EXPECT_EQ(sink.getEventBuffer(), &dfb.buffer);
}

TEST_F(DFBInputSinkTest, ReleasesTheBufferInTheEnd)
{
    dfb.calls.clear();
    const CapturedOutput output;
    {
        const DFBInputSink another(&dfb);
    }
    EXPECT_THAT(dfb.calls, ElementsAre("CreateInputEventBuffer(7,1)", "EventBuffer::Release()"));
    EXPECT_EQ(output.getText(), "");
}

TEST_F(DFBInputSinkTest, ReportsABufferThatIsNotCreatedAndThenTheException)
{
    dfb.results["CreateInputEventBuffer"] = DFB_NOSYSTEMMEMORY;
    dfb.calls.clear();
    const CapturedOutput output;
    try {
        const DFBInputSink failing(&dfb);
        FAIL() << "a sink without a buffer";
    } catch (const Exception& exception) {
        EXPECT_EQ(static_cast<int>(exception.getCode()), 7);
        EXPECT_STREQ(exception.what(), "Generic failure");
    }
    expectReports(
        output, "DFBInputSink",
        {{68, "DFBInputSink: CreateEventBuffer failed!"}, {69, "DFBInputSink(): throwing exception: Generic failure"}});
    EXPECT_THAT(dfb.calls, ElementsAre("CreateInputEventBuffer(7,1)")) << "there is nothing to release";
}

TEST_F(DFBInputSinkTest, ReportsABufferThatIsNotReleasedAndThrowsNothing)
{
    const CapturedOutput output;
    {
        const DFBInputSink another(&dfb);
        dfb.results["EventBuffer::Release"] = DFB_FAILURE;
    }
    dfb.results.clear();
    expectReports(output, "DFBInputSink", {{76, "~DFBInputSink: IDirectFBEventBuffer::Release failed!"}});
}

TEST_F(DFBInputSinkTest, PostsAKeyPressedAndReleased)
{
    expectKey(KeyEvent(KEY_A, true), KEY_PRESS, DIKI_A, DIKS_SMALL_A);
    expectKey(KeyEvent(KEY_A, false), KEY_RELEASE, DIKI_A, DIKS_SMALL_A);
    expectKey(KeyEvent(KEY_OK, true), KEY_PRESS, DIKI_UNKNOWN, DIKS_OK);
    expectKey(KeyEvent(BTN_LEFT, false), KEY_RELEASE, DIKI_UNKNOWN, DIKS_NULL);
}

TEST_F(DFBInputSinkTest, PostsACharacterPressedAndReleased)
{
    expectKey(AsciiEvent('A', true), KEY_PRESS, DIKI_A, DIKS_CAPITAL_A);
    expectKey(AsciiEvent('!', false), KEY_RELEASE, DIKI_1, DIKS_EXCLAMATION_MARK);
    expectKey(AsciiEvent(30, true), KEY_PRESS, DIKI_UNKNOWN, DIKS_NULL);
}

TEST_F(DFBInputSinkTest, DoesNotTakeACharacterForAKeyCode)
{
    ASSERT_EQ(static_cast<int>('\x1e'), KEY_A);
    expectKey(KeyEvent('1', true), KEY_PRESS, DIKI_N, DIKS_SMALL_N);
    expectKey(AsciiEvent('1', true), KEY_PRESS, DIKI_1, DIKS_1);
}

TEST_F(DFBInputSinkTest, PostsAButtonThatChanged)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(true, false, false, true, false, false))),
                ElementsAre(Posted{BUTTON_PRESS, LEFT, 0, BUTTONS_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(Buttons(false, true, false, false, true, false))),
                ElementsAre(Posted{BUTTON_PRESS, MIDDLE, 0, BUTTONS_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(Buttons(false, false, true, false, false, true))),
                ElementsAre(Posted{BUTTON_PRESS, RIGHT, 0, BUTTONS_FLAG}));
}

TEST_F(DFBInputSinkTest, PostsLeftThenMiddleThenRight)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(true, true, true, true, true, true))),
                ElementsAre(Posted{BUTTON_PRESS, LEFT, 0, BUTTONS_FLAG}, Posted{BUTTON_PRESS, MIDDLE, 0, BUTTONS_FLAG},
                            Posted{BUTTON_PRESS, RIGHT, 0, BUTTONS_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(Buttons(false, false, false, true, true, true))),
                ElementsAre(Posted{BUTTON_RELEASE, LEFT, 0, BUTTONS_FLAG},
                            Posted{BUTTON_RELEASE, MIDDLE, 0, BUTTONS_FLAG},
                            Posted{BUTTON_RELEASE, RIGHT, 0, BUTTONS_FLAG}));
}

TEST_F(DFBInputSinkTest, TellsOfNoPressedButtonInTheMaskWhateverIsPressed)
{
    for (int pressed = 0; pressed < 8; ++pressed) {
        dispatch(MouseEvent(Buttons((pressed & 1) != 0, (pressed & 2) != 0, (pressed & 4) != 0, true, false, false)));
        ASSERT_EQ(dfb.buffer.posted.size(), 1U);
        EXPECT_EQ(static_cast<int>(dfb.buffer.posted[0].input.buttons), 0) << pressed;
    }
}

TEST_F(DFBInputSinkTest, PostsAMovementByAxesAndLeavesOutTheOnesThatStand)
{
    const Buttons none;
    EXPECT_THAT(dispatch(MouseEvent(none, Movement(0, -3, 1))),
                ElementsAre(Posted{AXIS_MOTION, Y, -3, RELATIVE_FLAG}, Posted{AXIS_MOTION, Z, 1, RELATIVE_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(none, Movement(7, 8, -9))),
                ElementsAre(Posted{AXIS_MOTION, X, 7, RELATIVE_FLAG}, Posted{AXIS_MOTION, Y, 8, RELATIVE_FLAG},
                            Posted{AXIS_MOTION, Z, -9, RELATIVE_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(none, Movement(0, 0, 0))), IsEmpty());
}

TEST_F(DFBInputSinkTest, PostsAPositionAsAnAbsoluteOneInTheFieldOfMovements)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(10, 20))),
                ElementsAre(Posted{AXIS_MOTION, X, 10, ABSOLUTE_FLAG}, Posted{AXIS_MOTION, Y, 20, ABSOLUTE_FLAG}));
    EXPECT_EQ(dfb.buffer.posted[0].input.axisabs, 0) << "the field of absolute values stays empty";
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(-1, 0))),
                ElementsAre(Posted{AXIS_MOTION, X, -1, ABSOLUTE_FLAG}));
}

TEST_F(DFBInputSinkTest, PostsNothingForThePositionsZeroRowAndColumn)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(0, 0))), IsEmpty());
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(0, 4))), ElementsAre(Posted{AXIS_MOTION, Y, 4, ABSOLUTE_FLAG}));
}

TEST_F(DFBInputSinkTest, PrefersAPositionToAMovementAndTakesTheWheelOfTheMovement)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(10, 20), Movement(30, 40, 2))),
                ElementsAre(Posted{AXIS_MOTION, X, 10, ABSOLUTE_FLAG}, Posted{AXIS_MOTION, Y, 20, ABSOLUTE_FLAG},
                            Posted{AXIS_MOTION, Z, 2, ABSOLUTE_FLAG}));
    EXPECT_THAT(dispatch(MouseEvent(Buttons(), Position(0, 0), Movement(30, 40, -2))),
                ElementsAre(Posted{AXIS_MOTION, Z, -2, ABSOLUTE_FLAG}));
}

TEST_F(DFBInputSinkTest, PostsButtonsBeforeAxes)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(true, false, false, true, false, false), Position(10, 0))),
                ElementsAre(Posted{BUTTON_PRESS, LEFT, 0, BUTTONS_FLAG}, Posted{AXIS_MOTION, X, 10, ABSOLUTE_FLAG}));
    EXPECT_EQ(static_cast<int>(dfb.buffer.posted[0].input.buttons), 0);
}

TEST_F(DFBInputSinkTest, RepeatsTheFieldsOfAnEarlierPostInALaterOne)
{
    dispatch(MouseEvent(Buttons(false, false, true, false, false, true), Movement(5, 6, 0)));

    ASSERT_EQ(dfb.buffer.posted.size(), 3U);
    EXPECT_EQ(static_cast<int>(dfb.buffer.posted[2].input.button), RIGHT);
    EXPECT_EQ(static_cast<int>(dfb.buffer.posted[2].input.axis), Y);
}

TEST_F(DFBInputSinkTest, StartsEveryDispatchAnew)
{
    dispatch(MouseEvent(Buttons(false, false, true, false, false, true), Movement(5, 6, 0)));
    expectKey(KeyEvent(KEY_A, true), KEY_PRESS, DIKI_A, DIKS_SMALL_A);

    EXPECT_EQ(dfb.buffer.posted[0].input.device_id, 0U);
    EXPECT_EQ(dfb.buffer.posted[0].input.axisrel, 0);
}

TEST_F(DFBInputSinkTest, PostsNothingForAMouseEventWithoutContent)
{
    EXPECT_THAT(dispatch(MouseEvent(Buttons(true, true, true, false, false, false))), IsEmpty());
}

TEST_F(DFBInputSinkTest, IgnoresEveryOtherEvent)
{
    sink.dispatchEvent(OtherEvent());
    sink.dispatchEvent(NamedAs<KeyEvent>("keyevent", KeyEvent::Code{KEY_A}, true));

    EXPECT_THAT(dfb.buffer.posted, IsEmpty());
}

TEST_F(DFBInputSinkTest, GoesByTheTypeNameAndThrowsWhereTheClassDisagrees)
{
    EXPECT_THROW(sink.dispatchEvent(NamedAs<KeyEvent>(AsciiEvent::TYPE_NAME, KeyEvent::Code{KEY_A}, true)),
                 std::bad_cast);
    EXPECT_THROW(sink.dispatchEvent(NamedAs<KeyEvent>(MouseEvent::TYPE_NAME, KeyEvent::Code{KEY_A}, true)),
                 std::bad_cast);
    EXPECT_THROW(sink.dispatchEvent(NamedAs<AsciiEvent>(KeyEvent::TYPE_NAME, 'a', true)), std::bad_cast);
    EXPECT_THAT(dfb.buffer.posted, IsEmpty());
}

TEST_F(DFBInputSinkTest, GoesOnAfterAPostThatFails)
{
    dfb.results["PostEvent"] = DFB_BUFFEREMPTY;
    const CapturedOutput output;

    EXPECT_EQ(dispatch(MouseEvent(Buttons(true, true, false, true, true, false), Movement(1, 2, 3))).size(), 5U);
    EXPECT_EQ(output.getText(), "");
}

} // namespace Corvane::Test
