#include "screen/WindowStack.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace Procmand
{

using Corvane::deserialize;

void WindowState::serialize(Corvane::Serializer& serializer) const
{
    serializer.writeUnsigned("index", index);
    serializer.writeString("uid", uid);
    serializer.writeBoolean("visibility", visibility);
    serializer.writeUnsigned("opacity", opacity);
    serializer.writeUnsigned("zOrder", zOrder);
    location.serialize("location", serializer);
}

WindowState WindowState::read(Corvane::Deserializer& deserializer)
{
    return {.index = deserialize<unsigned int>("index", deserializer),
            .uid = deserialize<std::string>("uid", deserializer),
            .visibility = deserialize<bool>("visibility", deserializer),
            .opacity = deserialize<unsigned int>("opacity", deserializer),
            .zOrder = deserialize<unsigned int>("zOrder", deserializer),
            .location = deserialize<WindowStack::Rect>("location", deserializer)};
}

WindowStack::WindowStack(std::size_t limit) : limit(limit) {}

const WindowState& WindowStack::add(const std::string& uid,
                                    const Corvane::ISurfaceManagement::CreationSettings& settings)
{
    // An index that comes back after all numbers were used is that of a window that went long ago.
    do
        ++lastIndex;
    while (lastIndex == 0 || find(lastIndex) != nullptr);
    insert({.index = lastIndex,
            .uid = uid,
            .visibility = settings.getVisibility(),
            .opacity = std::min(settings.getOpacity(), 255U),
            .zOrder = settings.getZOrder(),
            .location = settings.getLocation()});
    return *find(lastIndex);
}

void WindowStack::restore(WindowState window)
{
    lastIndex = std::max(lastIndex, window.index);
    insert(std::move(window));
}

void WindowStack::insert(WindowState window)
{
    const auto place =
        std::upper_bound(windows.begin(), windows.end(), window.zOrder,
                         [](unsigned int zOrder, const WindowState& other) { return zOrder < other.zOrder; });
    windows.insert(place, std::move(window));
}

void WindowStack::remove(unsigned int index)
{
    windows.erase(require(index));
}

const WindowState* WindowStack::find(unsigned int index) const
{
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [index](const WindowState& window) { return window.index == index; });
    return found == windows.end() ? nullptr : &*found;
}

std::vector<unsigned int> WindowStack::findIndices(const std::string& uid) const
{
    std::vector<unsigned int> indices;
    for (const WindowState& window : windows)
        if (window.uid == uid)
            indices.push_back(window.index);
    return indices;
}

WindowStack::Position WindowStack::require(unsigned int index)
{
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [index](const WindowState& window) { return window.index == index; });
    if (found == windows.end())
        throw std::out_of_range("there is no window " + std::to_string(index));
    return found;
}

void WindowStack::setVisibility(unsigned int index, bool visibility)
{
    require(index)->visibility = visibility;
}

void WindowStack::setOpacity(unsigned int index, unsigned int opacity)
{
    require(index)->opacity = std::min(opacity, 255U);
}

void WindowStack::setLocation(unsigned int index, const Rect& location)
{
    require(index)->location = location;
}

void WindowStack::setZOrder(unsigned int index, unsigned int zOrder)
{
    const Position position = require(index);
    if (position->zOrder == zOrder)
        return;
    WindowState window = std::move(*position);
    windows.erase(position);
    window.zOrder = zOrder;
    insert(std::move(window));
}

void WindowStack::bringToFront(unsigned int index)
{
    const Position position = require(index);
    if (position + 1 == windows.end())
        return;
    const unsigned int highest = windows.back().zOrder;
    position->zOrder = highest == std::numeric_limits<unsigned int>::max() ? highest : highest + 1;
    std::rotate(position, position + 1, windows.end());
}

void WindowStack::sendToBack(unsigned int index)
{
    const Position position = require(index);
    if (position == windows.begin())
        return;
    const unsigned int lowest = windows.front().zOrder;
    position->zOrder = lowest == 0 ? lowest : lowest - 1;
    std::rotate(windows.begin(), position, position + 1);
}

void WindowStack::putBehind(unsigned int index, const std::vector<std::string>& uids)
{
    const Position position = require(index);
    const Position place = std::find_if(windows.begin(), position, [&](const WindowState& other) {
        return other.zOrder == position->zOrder && std::find(uids.begin(), uids.end(), other.uid) != uids.end();
    });
    std::rotate(place, position, position + 1);
}

void WindowStack::bringForward(unsigned int index)
{
    const Position position = require(index);
    if (position + 1 == windows.end())
        return;
    std::swap(position->zOrder, (position + 1)->zOrder);
    std::iter_swap(position, position + 1);
}

void WindowStack::sendBackward(unsigned int index)
{
    const Position position = require(index);
    if (position == windows.begin())
        return;
    std::swap(position->zOrder, (position - 1)->zOrder);
    std::iter_swap(position, position - 1);
}

} // namespace Procmand
