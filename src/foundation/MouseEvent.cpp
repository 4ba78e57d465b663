#include <corvane/interfaces/IWindowEvent.h>

#include "OptionalMember.h"

namespace Corvane
{

using MouseEvent = IWindowEvent::MouseEvent;
using Buttons = MouseEvent::Buttons;
using Movement = MouseEvent::Movement;
using Position = MouseEvent::Position;

const std::string MouseEvent::TYPE_NAME = "MouseEvent";

namespace
{

bool readFlag(const std::string& key, Deserializer& deserializer)
{
    return deserializeOptional(key, false, deserializer);
}

int readCoordinate(const std::string& key, Deserializer& deserializer)
{
    return deserializeOptional(key, 0, deserializer);
}

Buttons readButtons(Deserializer& deserializer)
{
    if (!deserializer.hasMember("buttons"))
        return {};
    deserializer.enterMember("buttons");
    const Buttons buttons(readFlag("isLeftPressed", deserializer), readFlag("isMiddlePressed", deserializer),
                          readFlag("isRightPressed", deserializer), readFlag("hasLeftChanged", deserializer),
                          readFlag("hasMiddleChanged", deserializer), readFlag("hasRightChanged", deserializer));
    deserializer.leaveMember("buttons");
    return buttons;
}

Movement readMovement(Deserializer& deserializer)
{
    if (!deserializer.hasMember("movement"))
        return {};
    deserializer.enterMember("movement");
    const Movement movement(readCoordinate("deltaX", deserializer), readCoordinate("deltaY", deserializer),
                            readCoordinate("deltaZ", deserializer));
    deserializer.leaveMember("movement");
    return movement;
}

Position readPosition(Deserializer& deserializer)
{
    if (!deserializer.hasMember("position"))
        return {};
    deserializer.enterMember("position");
    const Position position(readCoordinate("x", deserializer), readCoordinate("y", deserializer));
    deserializer.leaveMember("position");
    return position;
}

void write(const Buttons& buttons, Serializer& serializer)
{
    serializer.beginObject("buttons");
    serializer.writeBoolean("isLeftPressed", buttons.getIsLeftPressed());
    serializer.writeBoolean("isMiddlePressed", buttons.getIsMiddlePressed());
    serializer.writeBoolean("isRightPressed", buttons.getIsRightPressed());
    serializer.writeBoolean("hasLeftChanged", buttons.getHasLeftChanged());
    serializer.writeBoolean("hasMiddleChanged", buttons.getHasMiddleChanged());
    serializer.writeBoolean("hasRightChanged", buttons.getHasRightChanged());
    serializer.endObject("buttons");
}

void write(const Position& position, Serializer& serializer)
{
    serializer.beginObject("position");
    serializer.writeInteger("x", position.getX());
    serializer.writeInteger("y", position.getY());
    serializer.endObject("position");
}

void write(const Movement& movement, Serializer& serializer)
{
    serializer.beginObject("movement");
    serializer.writeInteger("deltaX", movement.getDeltaX());
    serializer.writeInteger("deltaY", movement.getDeltaY());
    serializer.writeInteger("deltaZ", movement.getDeltaZ());
    serializer.endObject("movement");
}

} // namespace

Buttons::Buttons(bool leftPressed, bool middlePressed, bool rightPressed, bool leftChanged, bool middleChanged,
                 bool rightChanged)
    : leftPressed(leftPressed),
      middlePressed(middlePressed),
      rightPressed(rightPressed),
      leftChanged(leftChanged),
      middleChanged(middleChanged),
      rightChanged(rightChanged)
{
}

bool Buttons::getIsLeftPressed() const
{
    return leftPressed;
}

bool Buttons::getIsMiddlePressed() const
{
    return middlePressed;
}

bool Buttons::getIsRightPressed() const
{
    return rightPressed;
}

bool Buttons::getHasLeftChanged() const
{
    return leftChanged;
}

bool Buttons::getHasMiddleChanged() const
{
    return middleChanged;
}

bool Buttons::getHasRightChanged() const
{
    return rightChanged;
}

Movement::Movement(int deltaX, int deltaY, int deltaZ) : deltaX(deltaX), deltaY(deltaY), deltaZ(deltaZ) {}

int Movement::getDeltaX() const
{
    return deltaX;
}

int Movement::getDeltaY() const
{
    return deltaY;
}

int Movement::getDeltaZ() const
{
    return deltaZ;
}

Position::Position(int x, int y) : x(x), y(y) {}

int Position::getX() const
{
    return x;
}

int Position::getY() const
{
    return y;
}

MouseEvent::MouseEvent(const Buttons& buttons) : buttons(buttons), hasPosition(false), hasMovement(false) {}

MouseEvent::MouseEvent(const Buttons& buttons, const Movement& movement)
    : buttons(buttons), movement(movement), hasPosition(false), hasMovement(true)
{
}

MouseEvent::MouseEvent(const Buttons& buttons, const Position& position)
    : buttons(buttons), position(position), hasPosition(true), hasMovement(false)
{
}

MouseEvent::MouseEvent(const Buttons& buttons, const Position& position, const Movement& movement)
    : buttons(buttons), movement(movement), position(position), hasPosition(true), hasMovement(true)
{
}

MouseEvent::MouseEvent(Deserializer& deserializer)
    : buttons(readButtons(deserializer)),
      movement(readMovement(deserializer)),
      position(readPosition(deserializer)),
      hasPosition(deserializer.hasMember("position")),
      hasMovement(deserializer.hasMember("movement"))
{
}

Buttons MouseEvent::getButtons() const
{
    return buttons;
}

Movement MouseEvent::getMovement() const
{
    return movement;
}

Position MouseEvent::getPosition() const
{
    return position;
}

bool MouseEvent::getHasPosition() const
{
    return hasPosition;
}

bool MouseEvent::getHasMovement() const
{
    return hasMovement;
}

std::string MouseEvent::getTypeName() const
{
    return TYPE_NAME;
}

std::unique_ptr<SerialObject> MouseEvent::clone() const
{
    return std::make_unique<MouseEvent>(*this);
}

void MouseEvent::serialize(Serializer& serializer) const
{
    serializer.writeString("type", TYPE_NAME);
    write(buttons, serializer);
    if (hasPosition)
        write(position, serializer);
    if (hasMovement)
        write(movement, serializer);
}

MouseEvent::~MouseEvent() = default;

} // namespace Corvane
