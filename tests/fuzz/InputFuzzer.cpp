#include "EventTranslator.h"
#include "Require.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/input-event-codes.h>
#include <map>

/// Whatever a device reports, in whatever order: each press is followed by its release, nothing is released that was
/// not pressed, and the pointer stays on the screen.
///
/// An input is one byte (bit 0: the device is a keyboard; bit 1: an absolute pointer) and then reports of eight bytes,
/// as the kernel writes them, without the time.
namespace
{

using namespace Corvane;
using KeyEvent = IWindowEvent::KeyEvent;
using AsciiEvent = IWindowEvent::AsciiEvent;
using MouseEvent = IWindowEvent::MouseEvent;

constexpr unsigned int WIDTH = 1280;
constexpr unsigned int HEIGHT = 720;

/// Hears what an application hears, and keeps what is down.
class Application
{
public:
    void hear(const IWindowEvent::InputEvent& event)
    {
        if (const auto* key = dynamic_cast<const KeyEvent*>(&event))
            hearKey(*key);
        else if (const auto* ascii = dynamic_cast<const AsciiEvent*>(&event))
            hearCharacter(*ascii);
        else
            hearMouse(dynamic_cast<const MouseEvent&>(event));
    }

    void checkThatNothingIsHeld() const
    {
        for (const auto& [code, isDown] : keys)
            require(!isDown, "no key is stuck");
        for (const auto& [character, isDown] : characters)
            require(!isDown, "no character is stuck");
        for (const bool isDown : buttons)
            require(!isDown, "no button is stuck");
    }

private:
    void hearKey(const KeyEvent& event)
    {
        const KeyEvent::Code code = event.getKeyCode();
        require(code > KEY_RESERVED && code <= KEY_MAX, "a key is one of Linux's");
        require(code < BTN_LEFT || code > BTN_MIDDLE, "a mouse button is no key");
        require(event.getPressed() || keys[code], "a key that is released was pressed");
        keys[code] = event.getPressed();
    }

    void hearCharacter(const AsciiEvent& event)
    {
        const unsigned char character = event.getAsciiCode();
        require(character >= ' ' && character <= '~', "a character prints");
        // Two keys may have one character, so it may be released twice.
        require(event.getPressed() || characters.contains(character), "a character that is released was pressed");
        characters[character] = event.getPressed();
    }

    void hearMouse(const MouseEvent& event)
    {
        const MouseEvent::Buttons now = event.getButtons();
        hearButton(buttons[0], now.getIsLeftPressed(), now.getHasLeftChanged());
        hearButton(buttons[1], now.getIsMiddlePressed(), now.getHasMiddleChanged());
        hearButton(buttons[2], now.getIsRightPressed(), now.getHasRightChanged());
        const MouseEvent::Position place = event.getPosition();
        require(place.getX() >= 0 && place.getX() < static_cast<int>(WIDTH), "the pointer is on the screen");
        require(place.getY() >= 0 && place.getY() < static_cast<int>(HEIGHT), "the pointer is on the screen");
    }

    static void hearButton(bool& isDown, bool isPressed, bool hasChanged)
    {
        require(hasChanged == (isDown != isPressed), "a button changes when it says so");
        isDown = isPressed;
    }

    std::map<KeyEvent::Code, bool> keys;
    std::map<unsigned char, bool> characters;
    std::array<bool, 3> buttons{};
};

struct Report {
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    Application application;
    EventTranslator translator((data[0] & 1) != 0, [&](const auto& event) { application.hear(*event); });
    if ((data[0] & 2) != 0)
        translator.setAbsolute({-100, 32767, 0}, {0, 32767, 0}, {WIDTH, HEIGHT});
    translator.enable({.keys = (data[0] & 4) == 0, .pointer = (data[0] & 8) == 0});
    for (std::size_t at = 1; at + sizeof(Report) <= size; at += sizeof(Report)) {
        Report report{};
        std::memcpy(&report, data + at, sizeof report);
        translator.handle(report.type, report.code, report.value);
    }
    translator.enable({});
    application.checkThatNothingIsHeld();
    return 0;
}
