#pragma once

#include <corvane/input/KeyNames.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <string>

namespace Corvane::Test
{

inline std::string buttonText(const char* name, bool isPressed, bool hasChanged)
{
    if (!hasChanged)
        return isPressed ? std::string(" ") + name + " held" : std::string();
    return std::string(" ") + name + (isPressed ? " pressed" : " released");
}

inline std::string eventText(const IWindowEvent::MouseEvent& event)
{
    const auto buttons = event.getButtons();
    std::string text = "mouse" + buttonText("left", buttons.getIsLeftPressed(), buttons.getHasLeftChanged()) +
                       buttonText("middle", buttons.getIsMiddlePressed(), buttons.getHasMiddleChanged()) +
                       buttonText("right", buttons.getIsRightPressed(), buttons.getHasRightChanged());
    if (event.getHasPosition())
        text += " at " + std::to_string(event.getPosition().getX()) + "," + std::to_string(event.getPosition().getY());
    if (event.getHasMovement())
        text += " by " + std::to_string(event.getMovement().getDeltaX()) + "," +
                std::to_string(event.getMovement().getDeltaY()) + "," + std::to_string(event.getMovement().getDeltaZ());
    return text;
}

/// An input event in words: "KEY_OK pressed", "'a' released", "mouse left pressed at 10,20 by 0,0,1".
inline std::string eventText(const IWindowEvent::InputEvent& event)
{
    if (const auto* key = dynamic_cast<const IWindowEvent::KeyEvent*>(&event)) {
        const std::string name = findKeyName(key->getKeyCode());
        return (name.empty() ? std::to_string(key->getKeyCode()) : name) +
               (key->getPressed() ? " pressed" : " released");
    }
    if (const auto* ascii = dynamic_cast<const IWindowEvent::AsciiEvent*>(&event))
        return std::string("'") + static_cast<char>(ascii->getAsciiCode()) + "'" +
               (ascii->getPressed() ? " pressed" : " released");
    return eventText(dynamic_cast<const IWindowEvent::MouseEvent&>(event));
}

} // namespace Corvane::Test
