#pragma once

#include <corvane/foundation/Event.h>
#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IListener.h>
#include <cstdint>
#include <string>

namespace Corvane
{

/// Input of a window and changes of its focus.
class CORVANE_EXPORT IWindowEvent
{
public:
    class InputEvent;
    class KeyEvent;
    class AsciiEvent;
    class MouseEvent;

    /// Hears of a window's focus.
    class CORVANE_EXPORT IWindowEventListener : public virtual IListener
    {
    public:
        virtual void onFocusChange(const std::string& uid, const bool& oldIsFocused, const bool& newIsFocused) = 0;
    };

    /// Receives input events.
    class CORVANE_EXPORT IInputEventListener : public virtual IListener
    {
    public:
        /// @return 0; the result has no meaning to the caller
        virtual int onInputEvent(const InputEvent& event) = 0;
        ~IInputEventListener() override = default;
    };

    virtual ~IWindowEvent() = default;
};

/// One input occurrence: a key, a character or the mouse.
class CORVANE_EXPORT IWindowEvent::InputEvent : public Event
{
public:
    ~InputEvent() override;

protected:
    InputEvent() = default;
    InputEvent(const InputEvent&) = default;
    InputEvent& operator=(const InputEvent&) = default;
};

/// A key of a keyboard or a remote control, pressed or released.
class CORVANE_EXPORT IWindowEvent::KeyEvent : public InputEvent
{
public:
    /// A KEY_ or BTN_ code of Linux's <linux/input-event-codes.h>.
    using Code = std::uint32_t;

    static const std::string TYPE_NAME; ///< "KeyEvent"

    KeyEvent(Code keyCode, bool pressed);
    /// Reads the members "keyCode" and "pressed" of the deserializer's current object.
    explicit KeyEvent(Deserializer& deserializer);

    Code getKeyCode() const;
    bool getPressed() const;

    std::string getTypeName() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~KeyEvent() override;

private:
    Code keyCode;
    bool pressed;
};

/// A character key, given by the ASCII code of its character.
class CORVANE_EXPORT IWindowEvent::AsciiEvent : public InputEvent
{
public:
    static const std::string TYPE_NAME; ///< "AsciiEvent"

    AsciiEvent(unsigned char asciiCode, bool pressed);
    /// Reads the members "asciiCode" (0 to 255) and "pressed" of the deserializer's current object.
    explicit AsciiEvent(Deserializer& deserializer);

    unsigned char getAsciiCode() const;
    bool getPressed() const;

    std::string getTypeName() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~AsciiEvent() override;

private:
    unsigned char asciiCode;
    bool pressed;
};

/// The pointer: its buttons, and where it is or how far it moved.
class CORVANE_EXPORT IWindowEvent::MouseEvent : public InputEvent
{
public:
    /// Which buttons are down, and which of them changed with this event.
    class CORVANE_EXPORT Buttons
    {
    public:
        Buttons() = default;
        Buttons(bool leftPressed, bool middlePressed, bool rightPressed, bool leftChanged, bool middleChanged,
                bool rightChanged);
        bool getIsLeftPressed() const;
        bool getIsMiddlePressed() const;
        bool getIsRightPressed() const;
        bool getHasLeftChanged() const;
        bool getHasMiddleChanged() const;
        bool getHasRightChanged() const;

    private:
        bool leftPressed{};
        bool middlePressed{};
        bool rightPressed{};
        bool leftChanged{};
        bool middleChanged{};
        bool rightChanged{};
    };

    /// A relative movement: x and y in pixels, z in steps of the wheel.
    class CORVANE_EXPORT Movement
    {
    public:
        Movement() = default;
        Movement(int deltaX, int deltaY, int deltaZ);
        int getDeltaX() const;
        int getDeltaY() const;
        int getDeltaZ() const;

    private:
        int deltaX{};
        int deltaY{};
        int deltaZ{};
    };

    /// An absolute position in pixels.
    class CORVANE_EXPORT Position
    {
    public:
        Position() = default;
        Position(int x, int y);
        int getX() const;
        int getY() const;

    private:
        int x{};
        int y{};
    };

    static const std::string TYPE_NAME; ///< "MouseEvent"

    /// A change of buttons alone.
    explicit MouseEvent(const Buttons& buttons);
    MouseEvent(const Buttons& buttons, const Movement& movement);
    MouseEvent(const Buttons& buttons, const Position& position);
    /// An absolute pointer with a wheel has both.
    MouseEvent(const Buttons& buttons, const Position& position, const Movement& movement);
    /// Reads the deserializer's current object. Its members "buttons", "movement" and "position" are objects named
    /// after their getters; each object and each of their members is optional, an absent one is false or 0.
    explicit MouseEvent(Deserializer& deserializer);

    Buttons getButtons() const;
    Movement getMovement() const;
    Position getPosition() const;
    bool getHasPosition() const;
    bool getHasMovement() const;

    std::string getTypeName() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~MouseEvent() override;

private:
    Buttons buttons;
    Movement movement;
    Position position;
    bool hasPosition;
    bool hasMovement;
};

/// Builds the event that the member `key` holds; its member "type" is one of the TYPE_NAME constants.
template <>
CORVANE_EXPORT std::shared_ptr<IWindowEvent::InputEvent>
createSerialObject<IWindowEvent::InputEvent>(const std::string& key, Deserializer& deserializer);

} // namespace Corvane
