#pragma once

#include "Typing.h"

#include <array>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Corvane
{

/// Turns what one device reports, in the words of Linux's input layer, into input events. Not synchronised.
///
/// A key gives an event at once, everything that belongs to the pointer one event a frame, or two when a key comes in
/// between: what the device reports keeps its order. Every press is followed by its release, at the latest when its
/// part of the device is turned off, and nothing is released that was not pressed.
///
///     EventTranslator translator(true, [](EventTranslator::EventPointer event) { ... });
///     translator.enable({.keys = true});
///     translator.handle(EV_KEY, KEY_A, 1);
class EventTranslator
{
public:
    using EventPointer = std::shared_ptr<const IWindowEvent::InputEvent>;
    using Sink = std::function<void(EventPointer)>;

    /// The parts of a device: its keys, and its axes with its buttons. What a part that is off reports is ignored.
    struct Parts {
        bool keys = false;
        bool pointer = false;
        bool isAny() const { return keys || pointer; }
    };

    /// One axis of an absolute pointer: what the device reports, and where it is now.
    struct Axis {
        int minimum;
        int maximum;
        int value;
    };

    /// Both parts are off at first.
    /// @param hasCharacters  keys with a character give AsciiEvents, as on a keyboard; else all keys give KeyEvents
    EventTranslator(bool hasCharacters, Sink sink);

    /// Gives a keyboard another layout than the US one; before the first enable(). Null leaves it.
    void setTyping(std::unique_ptr<Typing> layout) { typing = std::move(layout); }
    /// From now on the two axes give a position on a screen of this size.
    void setAbsolute(const Axis& x, const Axis& y, const ISurfaceCompositing::Dimensions& screen);
    void setCapsLock(bool on);
    bool isCapsLocked() const { return capsLocked; }
    /// Says of a key that it is down already. It counts where it changes others, as Shift does; its release is not told
    /// unless it is pressed or repeats before.
    void setDown(unsigned int code);
    /// Turns parts on and off. What is held on a part that goes off is released; the movement of an open frame is
    /// dropped then.
    void enable(const Parts& wanted);
    Parts getEnabled() const { return parts; }

    /// What the device reports. Types and codes without a meaning here, and values out of range, are ignored.
    void handle(unsigned int type, unsigned int code, int value);

private:
    struct HeldKey {
        std::optional<std::string> text; ///< that its press was told as; empty for a key, nothing for a dead key
        bool isTold = false;             ///< its press was
    };
    struct Button {
        bool isPressed = false;
        bool hasChanged = false;
    };
    struct AbsoluteAxis {
        Axis axis{};
        unsigned int extent = 0; ///< pixels; 0 when there is no such axis
        int getPixel() const;
    };

    void handleKey(unsigned int code, int value);
    void handlePress(unsigned int code, bool isRepeated);
    void handleRelease(unsigned int code);
    void handleButton(Button& button, bool pressed);
    void releaseKeys(bool areButtons);
    void releaseButtons();
    void handleRelative(unsigned int code, int value);
    void turn(unsigned int less, unsigned int more, int steps);
    void handleAbsolute(unsigned int code, int value);
    std::optional<std::string> type(unsigned int code);
    bool isCapsLock(unsigned int code) const;
    bool isAnyHeld(std::initializer_list<unsigned int> codes) const;
    void sendKey(unsigned int code, const std::optional<std::string>& text, bool pressed);
    void endFrame();
    void dropFrame();
    IWindowEvent::MouseEvent::Buttons takeButtons();

    const bool hasCharacters;
    const Sink sink;
    Parts parts;
    std::unique_ptr<Typing> typing;       ///< null for the US layout
    std::map<unsigned int, HeldKey> held; ///< by code
    bool capsLocked = false;

    std::array<Button, 3> buttons;          ///< left, right, middle: in the order of Linux's codes
    std::array<std::int64_t, 3> movement{}; ///< x, y, z of this frame
    std::array<AbsoluteAxis, 2> position;   ///< x, y
    bool hasPosition = false;               ///< it was reported in this frame
};

} // namespace Corvane
