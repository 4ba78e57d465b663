#include "ProblemOf.h"
#include <corvane/interfaces/IWindowEvent.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace Corvane::Test
{

namespace
{

using InputEvent = IWindowEvent::InputEvent;
using KeyEvent = IWindowEvent::KeyEvent;
using AsciiEvent = IWindowEvent::AsciiEvent;
using MouseEvent = IWindowEvent::MouseEvent;
using Buttons = MouseEvent::Buttons;
using Movement = MouseEvent::Movement;
using Position = MouseEvent::Position;

std::shared_ptr<InputEvent> readEvent(const std::string& event)
{
    Deserializer deserializer("{\"event\":" + event + ",\"after\":1}");
    std::shared_ptr<InputEvent> result = createSerialObject<InputEvent>("event", deserializer);
    EXPECT_EQ(deserializer.readInteger("after"), 1) << "the member was not left";
    return result;
}

std::string problemOfEvent(const std::string& event)
{
    return problemOf([&] { readEvent(event); });
}

const std::string NO_BUTTONS = R"("buttons":{"isLeftPressed":false,"isMiddlePressed":false,"isRightPressed":false,)"
                               R"("hasLeftChanged":false,"hasMiddleChanged":false,"hasRightChanged":false})";

} // namespace

TEST(InputEvents, HaveTheTypeNamesThatTravel)
{
    EXPECT_EQ(KeyEvent::TYPE_NAME, "KeyEvent");
    EXPECT_EQ(AsciiEvent::TYPE_NAME, "AsciiEvent");
    EXPECT_EQ(MouseEvent::TYPE_NAME, "MouseEvent");
    EXPECT_EQ(KeyEvent(1, true).getTypeName(), KeyEvent::TYPE_NAME);
    EXPECT_EQ(AsciiEvent('a', true).getTypeName(), AsciiEvent::TYPE_NAME);
    EXPECT_EQ(MouseEvent(Buttons()).getTypeName(), MouseEvent::TYPE_NAME);
    EXPECT_EQ(KeyEvent(1, true).getObjectType(), KeyEvent::TYPE_NAME);
}

TEST(InputEvents, AKeyKeepsItsCodeAndItsState)
{
    EXPECT_EQ(KeyEvent(28, true).getKeyCode(), 28U);
    EXPECT_TRUE(KeyEvent(28, true).getPressed());
    EXPECT_FALSE(KeyEvent(28, false).getPressed());
    EXPECT_EQ(KeyEvent(28, true).serialize(), R"({"type":"KeyEvent","keyCode":28,"pressed":true})");
}

TEST(InputEvents, ACharacterKeepsItsCodeAndItsState)
{
    EXPECT_EQ(AsciiEvent('a', true).getAsciiCode(), 'a');
    EXPECT_EQ(AsciiEvent(255, false).getAsciiCode(), 255);
    EXPECT_FALSE(AsciiEvent('a', false).getPressed());
    EXPECT_EQ(AsciiEvent('a', false).serialize(), R"({"type":"AsciiEvent","asciiCode":97,"pressed":false})");
}

TEST(InputEvents, TheButtonsOfAMouseAreKeptApart)
{
    for (int set = 0; set < 6; ++set) {
        const Buttons buttons(set == 0, set == 1, set == 2, set == 3, set == 4, set == 5);
        EXPECT_EQ(buttons.getIsLeftPressed(), set == 0);
        EXPECT_EQ(buttons.getIsMiddlePressed(), set == 1);
        EXPECT_EQ(buttons.getIsRightPressed(), set == 2);
        EXPECT_EQ(buttons.getHasLeftChanged(), set == 3);
        EXPECT_EQ(buttons.getHasMiddleChanged(), set == 4);
        EXPECT_EQ(buttons.getHasRightChanged(), set == 5);
    }
}

TEST(InputEvents, AMouseHasAPositionAMovementBothOrNeither)
{
    const MouseEvent neither{Buttons()};
    const MouseEvent moved(Buttons(), Movement(1, -2, 3));
    const MouseEvent placed(Buttons(), Position(-4, 5));
    const MouseEvent both(Buttons(true, false, false, true, false, false), Position(6, 7), Movement(0, 0, -1));

    EXPECT_FALSE(neither.getHasPosition() || neither.getHasMovement());
    EXPECT_TRUE(moved.getHasMovement() && !moved.getHasPosition());
    EXPECT_TRUE(placed.getHasPosition() && !placed.getHasMovement());
    EXPECT_TRUE(both.getHasPosition() && both.getHasMovement());
    EXPECT_EQ(moved.getMovement().getDeltaX(), 1);
    EXPECT_EQ(moved.getMovement().getDeltaY(), -2);
    EXPECT_EQ(moved.getMovement().getDeltaZ(), 3);
    EXPECT_EQ(placed.getPosition().getX(), -4);
    EXPECT_EQ(placed.getPosition().getY(), 5);
    EXPECT_EQ(neither.getMovement().getDeltaZ(), 0);
    EXPECT_EQ(neither.getPosition().getX(), 0);
    EXPECT_TRUE(both.getButtons().getIsLeftPressed() && both.getButtons().getHasLeftChanged());
}

TEST(InputEvents, AMouseIsWrittenWithWhatItHas)
{
    EXPECT_EQ(MouseEvent(Buttons()).serialize(), R"({"type":"MouseEvent",)" + NO_BUTTONS + "}");
    EXPECT_EQ(MouseEvent(Buttons(true, false, true, false, true, false)).serialize(),
              R"({"type":"MouseEvent","buttons":{"isLeftPressed":true,"isMiddlePressed":false,"isRightPressed":true,)"
              R"("hasLeftChanged":false,"hasMiddleChanged":true,"hasRightChanged":false}})");
    EXPECT_EQ(MouseEvent(Buttons(), Position(1, 2)).serialize(),
              R"({"type":"MouseEvent",)" + NO_BUTTONS + R"(,"position":{"x":1,"y":2}})");
    EXPECT_EQ(MouseEvent(Buttons(), Movement(1, -2, 3)).serialize(),
              R"({"type":"MouseEvent",)" + NO_BUTTONS + R"(,"movement":{"deltaX":1,"deltaY":-2,"deltaZ":3}})");
    EXPECT_EQ(MouseEvent(Buttons(), Position(1, 2), Movement(0, 0, 1)).serialize(),
              R"({"type":"MouseEvent",)" + NO_BUTTONS +
                  R"(,"position":{"x":1,"y":2},"movement":{"deltaX":0,"deltaY":0,"deltaZ":1}})");
}

TEST(InputEvents, AreCreatedOfTheClassThatTheirTypeNames)
{
    const auto key =
        std::dynamic_pointer_cast<KeyEvent>(readEvent(R"({"type":"KeyEvent","keyCode":28,"pressed":true})"));
    const auto ascii =
        std::dynamic_pointer_cast<AsciiEvent>(readEvent(R"({"pressed":false,"asciiCode":255,"type":"AsciiEvent"})"));
    const auto mouse =
        std::dynamic_pointer_cast<MouseEvent>(readEvent(R"({"type":"MouseEvent","position":{"x":-1,"y":2}})"));

    ASSERT_TRUE(key && ascii && mouse);
    EXPECT_EQ(key->getKeyCode(), 28U);
    EXPECT_TRUE(key->getPressed());
    EXPECT_EQ(ascii->getAsciiCode(), 255);
    EXPECT_FALSE(ascii->getPressed());
    EXPECT_EQ(mouse->getPosition().getX(), -1);
}

TEST(InputEvents, AreCreatedFromTheCurrentObjectWithAnEmptyKey)
{
    Deserializer deserializer(R"({"type":"KeyEvent","keyCode":1,"pressed":false})");

    EXPECT_EQ(createSerialObject<InputEvent>("", deserializer)->getTypeName(), "KeyEvent");
    EXPECT_EQ(deserializer.readInteger("keyCode"), 1);
}

TEST(InputEvents, ComeBackAsTheyWereWritten)
{
    const MouseEvent mouse(Buttons(true, false, true, false, true, true), Position(-2147483647, 5), Movement(1, 2, -3));
    const KeyEvent key(4294967295U, false);
    const AsciiEvent ascii(0, true);
    for (const InputEvent* event : {static_cast<const InputEvent*>(&mouse), static_cast<const InputEvent*>(&key),
                                    static_cast<const InputEvent*>(&ascii)}) {
        EXPECT_EQ(readEvent(event->serialize())->serialize(), event->serialize());
        EXPECT_EQ(event->clone()->serialize(), event->serialize());
    }
}

TEST(InputEvents, AMouseMayLeaveOutWhatIsFalseOrZero)
{
    EXPECT_EQ(readEvent(R"({"type":"MouseEvent"})")->serialize(), MouseEvent(Buttons()).serialize());
    EXPECT_EQ(
        readEvent(R"({"type":"MouseEvent","movement":{"deltaZ":-1},"buttons":{"hasRightChanged":true}})")->serialize(),
        MouseEvent(Buttons(false, false, false, false, false, true), Movement(0, 0, -1)).serialize());
    EXPECT_EQ(readEvent(R"({"type":"MouseEvent","position":{}})")->serialize(),
              MouseEvent(Buttons(), Position(0, 0)).serialize());
}

TEST(InputEvents, RefuseATypeThatIsNotKnown)
{
    EXPECT_EQ(problemOfEvent(R"({"type":"Foo"})"), "event: unknown event type \"Foo\"");
    EXPECT_EQ(problemOfEvent(R"({"type":"keyevent","keyCode":1,"pressed":true})"),
              "event: unknown event type \"keyevent\"");
    EXPECT_EQ(problemOfEvent(R"({"type":""})"), "event: unknown event type \"\"");
    EXPECT_EQ(problemOfEvent("{\"type\":\"" + std::string(70000, 'F') + "\"}"),
              "event: unknown event type \"" + std::string(64, 'F') + "...\"");
}

TEST(InputEvents, RefuseAMissingOrWrongType)
{
    EXPECT_EQ(problemOfEvent(R"({"keyCode":1,"pressed":true})"), "event.type: missing");
    EXPECT_EQ(problemOfEvent(R"({"type":7})"), "event.type: expected a string, found 7");
    EXPECT_EQ(problemOfEvent("\"KeyEvent\""), "event: expected an object, found string");
    Deserializer deserializer("{}");
    EXPECT_EQ(problemOf([&] { createSerialObject<InputEvent>("event", deserializer); }), "event: missing");
}

TEST(InputEvents, RefuseAKeyThatIsIncompleteOrWrong)
{
    EXPECT_EQ(problemOfEvent(R"({"type":"KeyEvent","pressed":true})"), "event.keyCode: missing");
    EXPECT_EQ(problemOfEvent(R"({"type":"KeyEvent","keyCode":28})"), "event.pressed: missing");
    EXPECT_EQ(problemOfEvent(R"({"type":"KeyEvent","keyCode":-1,"pressed":true})"),
              "event.keyCode: expected an unsigned 32-bit number, found -1");
    EXPECT_EQ(problemOfEvent(R"({"type":"KeyEvent","keyCode":28,"pressed":1})"),
              "event.pressed: expected true or false, found 1");
}

TEST(InputEvents, RefuseACharacterBeyond255)
{
    EXPECT_EQ(problemOfEvent(R"({"type":"AsciiEvent","asciiCode":256,"pressed":true})"),
              "event.asciiCode: expected a number from 0 to 255, found 256");
    EXPECT_EQ(problemOfEvent(R"({"type":"AsciiEvent","asciiCode":-1,"pressed":true})"),
              "event.asciiCode: expected an unsigned 32-bit number, found -1");
}

TEST(InputEvents, RefuseAMouseWithSomethingWrong)
{
    EXPECT_EQ(problemOfEvent(R"({"type":"MouseEvent","position":null})"),
              "event.position: expected an object, found null");
    EXPECT_EQ(problemOfEvent(R"({"type":"MouseEvent","position":{"x":1.5}})"),
              "event.position.x: expected a signed 32-bit number, found 1.5");
    EXPECT_EQ(problemOfEvent(R"({"type":"MouseEvent","movement":{"deltaZ":"1"}})"),
              "event.movement.deltaZ: expected a signed 32-bit number, found string");
    EXPECT_EQ(problemOfEvent(R"({"type":"MouseEvent","buttons":[]})"),
              "event.buttons: expected an object, found array");
    EXPECT_EQ(problemOfEvent(R"({"type":"MouseEvent","buttons":{"isLeftPressed":0}})"),
              "event.buttons.isLeftPressed: expected true or false, found 0");
}

} // namespace Corvane::Test
