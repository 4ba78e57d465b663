#include "EventQueue.h"

#include "Clamp.h"

#include <algorithm>
#include <utility>

namespace Corvane
{

using MouseEvent = IWindowEvent::MouseEvent;

namespace
{

/// @return the event as one of the pointer that tells of no change of a button; null when it is something else
const MouseEvent* findMovement(const IWindowEvent::InputEvent& event)
{
    const auto* const mouse = dynamic_cast<const MouseEvent*>(&event);
    if (mouse == nullptr)
        return nullptr;
    const MouseEvent::Buttons buttons = mouse->getButtons();
    return buttons.getHasLeftChanged() || buttons.getHasMiddleChanged() || buttons.getHasRightChanged() ? nullptr
                                                                                                        : mouse;
}

MouseEvent::Movement add(const MouseEvent::Movement& a, const MouseEvent::Movement& b)
{
    const auto sum = [](int x, int y) { return clampToInt(std::int64_t{x} + y); };
    return {sum(a.getDeltaX(), b.getDeltaX()), sum(a.getDeltaY(), b.getDeltaY()), sum(a.getDeltaZ(), b.getDeltaZ())};
}

/// Two movements of one device, one after the other, as one.
EventQueue::EventPointer combine(const MouseEvent& earlier, const MouseEvent& later)
{
    const MouseEvent::Movement movement = add(earlier.getMovement(), later.getMovement());
    if (!earlier.getHasPosition() && !later.getHasPosition())
        return std::make_shared<const MouseEvent>(later.getButtons(), movement);
    const MouseEvent::Position position = (later.getHasPosition() ? later : earlier).getPosition();
    if (!earlier.getHasMovement() && !later.getHasMovement())
        return std::make_shared<const MouseEvent>(later.getButtons(), position);
    return std::make_shared<const MouseEvent>(later.getButtons(), position, movement);
}

} // namespace

void EventQueue::push(Entry entry)
{
    if (entries.size() < MERGE_FROM || !merge(entry))
        entries.push_back(std::move(entry));
}

EventQueue::Entry EventQueue::pop()
{
    Entry first = std::move(entries.front());
    entries.pop_front();
    return first;
}

bool EventQueue::merge(const Entry& entry)
{
    const MouseEvent* const later = entry.device != nullptr ? findMovement(*entry.event) : nullptr;
    if (later == nullptr)
        return false;
    const auto last = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry& waiting) {
        return waiting.device == entry.device && waiting.sessionIndex == entry.sessionIndex;
    });
    const MouseEvent* const earlier = last != entries.rend() ? findMovement(*last->event) : nullptr;
    if (earlier == nullptr)
        return false;
    last->event = combine(*earlier, *later);
    return true;
}

} // namespace Corvane
