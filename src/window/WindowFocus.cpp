#include "WindowWalk.h"
#include <corvane/input/MultiInputDriver.h>
#include <corvane/interfaces/ICursor.h>

namespace Corvane
{

namespace
{

using Point = ISurfaceCompositing::Point;
using Rect = ISurfaceCompositing::Rect;

/// @return where the event puts a cursor that is at `place`; a position wins over a movement
Rect moveBy(const IWindowEvent::MouseEvent& event, const Rect& place)
{
    if (event.getHasPosition()) {
        const IWindowEvent::MouseEvent::Position position = event.getPosition();
        return {Point(position.getX(), position.getY()), place.getDimensions()};
    }
    if (event.getHasMovement()) {
        const IWindowEvent::MouseEvent::Movement movement = event.getMovement();
        return {place.getPoint() + Point(movement.getDeltaX(), movement.getDeltaY()), place.getDimensions()};
    }
    return place;
}

} // namespace

void Window::handleFocus(bool focus)
{
    // Gaining the focus does not show the cursor: the next mouse event does.
    if (cursor != nullptr && !focus)
        cursor->setVisibility(false);
    const bool oldIsFocused = focused;
    focused = focus;
    if (focus) {
        setPriority(FOCUSED_PRIORITY);
        inputDriver->enableMouse();
    } else {
        setPriority(DEFAULT_PRIORITY);
        inputDriver->disableMouse();
    }
    onFocusChange(getUid(), oldIsFocused, focus);
}

bool Window::isFocused()
{
    return focused;
}

bool Window::handleEvent(const Event& event)
{
    if (cursor == nullptr || event.getTypeName() != IWindowEvent::MouseEvent::TYPE_NAME)
        return false;
    Rect place = moveBy(dynamic_cast<const IWindowEvent::MouseEvent&>(event), cursor->getLocation());
    // Deliberate: the window's place is added on every event, also to a movement of a cursor that was moved before.
    if (!cursor->isCursorGlobal())
        place = Rect(place.getPoint() + getLocation().getPoint(), place.getDimensions());
    cursor->setLocation(place);
    if (focused)
        cursor->setVisibility(cursorEnabled);
    return false;
}

void Window::onFocusChange(const std::string& uid, const bool& oldIsFocused, const bool& newIsFocused)
{
    tellWindowListeners([&](auto& listener) { listener.onFocusChange(uid, oldIsFocused, newIsFocused); });
}

} // namespace Corvane
