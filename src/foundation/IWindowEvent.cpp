#include <corvane/interfaces/IWindowEvent.h>

#include "OptionalMember.h"
#include "Quote.h"
#include <limits>

namespace Corvane
{

using InputEvent = IWindowEvent::InputEvent;
using KeyEvent = IWindowEvent::KeyEvent;
using AsciiEvent = IWindowEvent::AsciiEvent;

const std::string KeyEvent::TYPE_NAME = "KeyEvent";
const std::string AsciiEvent::TYPE_NAME = "AsciiEvent";

namespace
{

unsigned char readAsciiCode(Deserializer& deserializer)
{
    const unsigned int code = deserialize<unsigned int>("asciiCode", deserializer);
    if (code > std::numeric_limits<unsigned char>::max())
        deserializer.fail("asciiCode", "expected a number from 0 to 255, found " + std::to_string(code));
    return static_cast<unsigned char>(code);
}

} // namespace

InputEvent::~InputEvent() = default;

KeyEvent::KeyEvent(Code keyCode, bool pressed) : keyCode(keyCode), pressed(pressed) {}

KeyEvent::KeyEvent(Deserializer& deserializer)
    : keyCode(deserialize<Code>("keyCode", deserializer)), pressed(deserialize<bool>("pressed", deserializer))
{
}

KeyEvent::Code KeyEvent::getKeyCode() const
{
    return keyCode;
}

bool KeyEvent::getPressed() const
{
    return pressed;
}

std::string KeyEvent::getTypeName() const
{
    return TYPE_NAME;
}

std::unique_ptr<SerialObject> KeyEvent::clone() const
{
    return std::make_unique<KeyEvent>(*this);
}

void KeyEvent::serialize(Serializer& serializer) const
{
    serializer.writeString("type", TYPE_NAME);
    serializer.writeUnsigned("keyCode", keyCode);
    serializer.writeBoolean("pressed", pressed);
}

KeyEvent::~KeyEvent() = default;

AsciiEvent::AsciiEvent(unsigned char asciiCode, bool pressed) : asciiCode(asciiCode), pressed(pressed) {}

AsciiEvent::AsciiEvent(Deserializer& deserializer)
    : asciiCode(readAsciiCode(deserializer)), pressed(deserialize<bool>("pressed", deserializer))
{
}

unsigned char AsciiEvent::getAsciiCode() const
{
    return asciiCode;
}

bool AsciiEvent::getPressed() const
{
    return pressed;
}

std::string AsciiEvent::getTypeName() const
{
    return TYPE_NAME;
}

std::unique_ptr<SerialObject> AsciiEvent::clone() const
{
    return std::make_unique<AsciiEvent>(*this);
}

void AsciiEvent::serialize(Serializer& serializer) const
{
    serializer.writeString("type", TYPE_NAME);
    serializer.writeUnsigned("asciiCode", asciiCode);
    serializer.writeBoolean("pressed", pressed);
}

AsciiEvent::~AsciiEvent() = default;

template <>
std::shared_ptr<InputEvent> createSerialObject<InputEvent>(const std::string& key, Deserializer& deserializer)
{
    deserializer.enterMember(key);
    const std::string type = deserialize<std::string>("type", deserializer);
    std::shared_ptr<InputEvent> event;
    if (type == KeyEvent::TYPE_NAME)
        event = std::make_shared<KeyEvent>(deserializer);
    else if (type == AsciiEvent::TYPE_NAME)
        event = std::make_shared<AsciiEvent>(deserializer);
    else if (type == IWindowEvent::MouseEvent::TYPE_NAME)
        event = std::make_shared<IWindowEvent::MouseEvent>(deserializer);
    else
        deserializer.fail({}, "unknown event type \"" + excerpt(type) + "\"");
    deserializer.leaveMember(key);
    return event;
}

} // namespace Corvane
