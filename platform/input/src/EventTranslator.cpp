#include "EventTranslator.h"

#include "ButtonCodes.h"
#include "Characters.h"
#include "Clamp.h"

#include <algorithm>
#include <cstdlib>
#include <linux/input-event-codes.h>
#include <utility>

namespace Corvane
{

using KeyEvent = IWindowEvent::KeyEvent;
using AsciiEvent = IWindowEvent::AsciiEvent;
using MouseEvent = IWindowEvent::MouseEvent;

namespace
{

/// The values of a key.
enum KeyValue { RELEASED = 0, PRESSED = 1, REPEATED = 2 };

/// How many keys one report of a wheel or a knob gives: no hand turns further between two, and what is broken may say
/// any number.
constexpr int MOST_STEPS = 16;

} // namespace

EventTranslator::EventTranslator(bool hasCharacters, Sink sink) : hasCharacters(hasCharacters), sink(std::move(sink)) {}

void EventTranslator::setAbsolute(const Axis& x, const Axis& y, const ISurfaceCompositing::Dimensions& screen)
{
    position = {AbsoluteAxis{x, screen.getWidth()}, AbsoluteAxis{y, screen.getHeight()}};
}

void EventTranslator::setCapsLock(bool on)
{
    capsLocked = on;
}

void EventTranslator::setDown(unsigned int code)
{
    const bool isNew = held.try_emplace(code).second;
    if (isNew && typing != nullptr)
        typing->setDown(code, true);
}

void EventTranslator::enable(const Parts& wanted)
{
    const Parts before = std::exchange(parts, wanted);
    const bool isPointerGoingOff = before.pointer && !wanted.pointer;
    if (isPointerGoingOff)
        dropFrame();
    if (before.keys && !wanted.keys) {
        releaseKeys(false);
        if (typing != nullptr)
            typing->forgetDeadKey();
    }
    if (isPointerGoingOff)
        releaseButtons();
}

void EventTranslator::handle(unsigned int type, unsigned int code, int value)
{
    if (type == EV_KEY && (isButton(code) ? parts.pointer : parts.keys))
        handleKey(code, value);
    else if (type == EV_REL && parts.pointer)
        handleRelative(code, value);
    else if (type == EV_ABS && parts.pointer)
        handleAbsolute(code, value);
    else if (type == EV_LED && code == LED_CAPSL)
        setCapsLock(value != 0);
    else if (type == EV_SYN && code == SYN_REPORT)
        endFrame();
    else if (type == EV_SYN && code == SYN_DROPPED)
        dropFrame();
}

void EventTranslator::handleKey(unsigned int code, int value)
{
    if (code == KEY_RESERVED || code > KEY_MAX || value < RELEASED || value > REPEATED)
        return;
    if (code >= BTN_LEFT && code <= BTN_MIDDLE) {
        if (value != REPEATED)
            handleButton(buttons[code - BTN_LEFT], value == PRESSED);
        return;
    }
    if (value != RELEASED)
        handlePress(code, value == REPEATED);
    else
        handleRelease(code);
}

void EventTranslator::handlePress(unsigned int code, bool isRepeated)
{
    const auto [known, isNew] = held.try_emplace(code);
    HeldKey& key = known->second;
    if (!key.isTold) {
        key = {type(code), true};
        // One that was down already has done its work, and repeats in vain.
        if (isCapsLock(code) && !isRepeated)
            setCapsLock(!capsLocked);
    }
    // A key counts for those after it, not for what it types itself.
    if (isNew && typing != nullptr)
        typing->setDown(code, true);
    sendKey(code, key.text, true);
}

void EventTranslator::handleRelease(unsigned int code)
{
    const auto key = held.extract(code);
    if (key && typing != nullptr)
        typing->setDown(code, false);
    // With the character of the press, although Shift may have been released in between.
    if (key && key.mapped().isTold)
        sendKey(code, key.mapped().text, false);
}

void EventTranslator::handleButton(Button& button, bool pressed)
{
    if (button.isPressed == pressed)
        return;
    // A click within one frame would vanish: one event tells of one change of a button.
    if (button.hasChanged)
        endFrame();
    button = {pressed, true};
}

void EventTranslator::handleRelative(unsigned int code, int value)
{
    if (code == REL_X || code == REL_Y)
        movement[code - REL_X] += value;
    else if (code == REL_WHEEL) // and not REL_WHEEL_HI_RES, which tells of the same step once more
        movement[2] -= value;
    else if (code == REL_HWHEEL) // a MouseEvent has no place for it
        turn(KEY_LEFT, KEY_RIGHT, value);
    else if (code == REL_DIAL)
        turn(KEY_VOLUMEDOWN, KEY_VOLUMEUP, value);
}

void EventTranslator::turn(unsigned int less, unsigned int more, int steps)
{
    const unsigned int code = steps < 0 ? less : more;
    for (int left = std::abs(std::clamp(steps, -MOST_STEPS, MOST_STEPS)); left > 0; --left) {
        handleKey(code, PRESSED);
        handleKey(code, RELEASED);
    }
}

void EventTranslator::handleAbsolute(unsigned int code, int value)
{
    if (code > ABS_Y || position[code].extent == 0)
        return;
    position[code].axis.value = value;
    hasPosition = true;
}

std::optional<std::string> EventTranslator::type(unsigned int code)
{
    if (typing != nullptr)
        return typing->type(code, capsLocked);
    // With one of these a key is a command and not a character.
    if (!hasCharacters ||
        isAnyHeld({KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT, KEY_RIGHTALT, KEY_LEFTMETA, KEY_RIGHTMETA}))
        return "";
    const unsigned char character = findCharacter(code, isAnyHeld({KEY_LEFTSHIFT, KEY_RIGHTSHIFT}), capsLocked);
    return character != 0 ? std::string(1, static_cast<char>(character)) : std::string();
}

bool EventTranslator::isCapsLock(unsigned int code) const
{
    return typing != nullptr ? typing->isCapsLock(code) : code == KEY_CAPSLOCK;
}

bool EventTranslator::isAnyHeld(std::initializer_list<unsigned int> codes) const
{
    return std::ranges::any_of(codes, [this](unsigned int code) { return held.contains(code); });
}

void EventTranslator::sendKey(unsigned int code, const std::optional<std::string>& text, bool pressed)
{
    // What the pointer did before the key comes before it: a drag that begins with a key held is none without it.
    endFrame();
    if (!text)
        return;
    if (text->empty())
        sink(std::make_shared<const KeyEvent>(code, pressed));
    for (const char byte : *text)
        sink(std::make_shared<const AsciiEvent>(static_cast<unsigned char>(byte), pressed));
}

int EventTranslator::AbsoluteAxis::getPixel() const
{
    const std::int64_t range = std::int64_t{axis.maximum} - axis.minimum;
    if (range <= 0)
        return 0;
    const std::int64_t place = std::clamp(axis.value, axis.minimum, axis.maximum) - std::int64_t{axis.minimum};
    // Rounded: who scales a column to the axis may have rounded down already, and means the nearest one.
    return clampToInt((place * (extent - 1) + range / 2) / range);
}

MouseEvent::Buttons EventTranslator::takeButtons()
{
    const auto [left, right, middle] = buttons;
    for (Button& button : buttons)
        button.hasChanged = false;
    return {left.isPressed, middle.isPressed, right.isPressed, left.hasChanged, middle.hasChanged, right.hasChanged};
}

void EventTranslator::endFrame()
{
    const auto [x, y, z] = std::exchange(movement, {});
    const bool hasMoved = x != 0 || y != 0 || z != 0;
    const bool isPlaced = std::exchange(hasPosition, false);
    if (!hasMoved && !isPlaced && std::ranges::none_of(buttons, &Button::hasChanged))
        return;
    const MouseEvent::Buttons state = takeButtons();
    const MouseEvent::Movement delta(clampToInt(x), clampToInt(y), clampToInt(z));
    const MouseEvent::Position place(position[0].getPixel(), position[1].getPixel());
    if (isPlaced && hasMoved)
        sink(std::make_shared<const MouseEvent>(state, place, delta));
    else if (isPlaced)
        sink(std::make_shared<const MouseEvent>(state, place));
    else if (hasMoved)
        sink(std::make_shared<const MouseEvent>(state, delta));
    else
        sink(std::make_shared<const MouseEvent>(state));
}

void EventTranslator::dropFrame()
{
    movement = {};
    hasPosition = false;
    // Buttons stay: they are not told again when the device is synchronised, for that compares with what was read.
    endFrame();
}

void EventTranslator::releaseKeys(bool areButtons)
{
    for (auto next = held.begin(); next != held.end();) {
        const unsigned int code = next++->first;
        if (isButton(code) == areButtons)
            handleKey(code, RELEASED);
    }
}

void EventTranslator::releaseButtons()
{
    releaseKeys(true);
    for (Button& button : buttons)
        handleButton(button, false);
    endFrame();
}

} // namespace Corvane
