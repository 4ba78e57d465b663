#include "windows/WindowService.h"

#include <algorithm>
#include <corvane/foundation/DebugPrint.h>
#include <functional>

namespace Procmand
{

namespace
{

/// A window that fades changes often, and who asks for windows and gives them back does so too: the windows are written
/// at most so often.
constexpr std::chrono::seconds KEEP_INTERVAL{1};

} // namespace

WindowService::WindowService(Box& box) : box(box) {}

WindowService::Token WindowService::grant(const std::string& uid, const Settings& settings)
{
    const auto location = settings.getLocation();
    if (location.getWidth() == 0 || location.getHeight() == 0)
        return refuse(uid, "a window without a size");
    if (box.windows.isFull())
        return exhaust(uid, "all " + std::to_string(box.settings.windowLimit) + " are in use");
    const WindowState window = box.windows.add(uid, settings);
    takePlaceBack(window);
    box.notices.onWindowGrant(window);
    keep();
    return {Token::STATE_GRANTED, window.index};
}

void WindowService::takePlaceBack(const WindowState& window)
{
    ManagedApplication* const owner = box.registry.find(window.uid);
    // The settings that it was started with say the rest.
    if (owner != nullptr && std::exchange(owner->takesPlaceBack, false))
        box.windows.putBehind(window.index, owner->placement->front);
}

void WindowService::rememberPlacement(ManagedApplication& application) const
{
    if (auto placement = Placement::find(box.windows.getWindows(), application.uid))
        application.placement = std::move(placement);
}

WindowService::Token WindowService::refuse(const std::string& uid, const std::string& reason)
{
    Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "WindowService", __LINE__, "%s gets no window: %s\n",
                               uid.c_str(), reason.c_str());
    return {Token::STATE_REFUSED, 0};
}

WindowService::Token WindowService::exhaust(const std::string& uid, const std::string& reason)
{
    refuse(uid, reason);
    return {Token::STATE_EXHAUSTED, 0};
}

void WindowService::release(unsigned int index)
{
    const WindowState window = require(index);
    // Now, not when the application ends: one that ends in order gives its window back first. What it does with it when
    // it is stopped does not count.
    ManagedApplication* const owner = box.registry.find(window.uid);
    if (owner != nullptr && owner->stopPurpose == StopPurpose::NONE)
        rememberPlacement(*owner);
    box.windows.remove(index);
    box.notices.onWindowRelease(window);
    keep();
}

void WindowService::releaseAll(const std::string& uid)
{
    std::vector<unsigned int> indices = box.windows.findIndices(uid);
    // The oldest one last: its place is the one to remember.
    std::sort(indices.begin(), indices.end(), std::greater());
    for (const unsigned int index : indices)
        release(index);
    flush(); // an end is written at once, and so is what changed before it
}

void WindowService::restore(const std::vector<WindowState>& windows)
{
    for (const WindowState& window : windows)
        if (ManagedApplication* const owner = box.registry.find(window.uid); owner != nullptr && owner->isAlive())
            box.windows.restore(window);
    show();
}

const WindowState& WindowService::require(unsigned int index) const
{
    if (const WindowState* const window = box.windows.find(index))
        return *window;
    throw std::out_of_range("there is no window " + std::to_string(index));
}

void WindowService::announceChanges(const std::vector<WindowState>& before) const
{
    for (const WindowState& old : before)
        if (const WindowState* const now = box.windows.find(old.index))
            box.notices.onWindowChange(old, *now);
}

void WindowService::show()
{
    std::vector<WindowState> shown = box.windows.getWindows();
    for (WindowState& window : shown)
        if (const ManagedApplication* const application = box.registry.find(window.uid))
            window.label = application->describe();
    box.compositor->setWindows(shown);
}

void WindowService::keep()
{
    show();
    isToBeKept = true;
    // The first change at once, so that a process manager that is killed leaves what the application was told.
    if (keepTimer == 0)
        keepNow();
}

void WindowService::keepNow()
{
    flush();
    keepTimer = box.loop.schedule(KEEP_INTERVAL, [this] {
        keepTimer = 0;
        if (isToBeKept)
            keepNow();
    });
}

void WindowService::flush()
{
    if (std::exchange(isToBeKept, false))
        box.note(writeWindowsRecord(box.windows.getWindows()));
}

} // namespace Procmand
