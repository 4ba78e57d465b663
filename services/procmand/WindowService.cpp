#include "WindowService.h"

#include <corvane/foundation/DebugPrint.h>

namespace Procmand
{

namespace
{

/// A window that fades changes often; its states are written at most so often.
constexpr std::chrono::milliseconds KEEP_INTERVAL{500};

} // namespace

WindowService::WindowService(Box& box) : box(box) {}

WindowService::Token WindowService::grant(const std::string& uid, const Settings& settings)
{
    const auto location = settings.getLocation();
    if (location.getWidth() == 0 || location.getHeight() == 0)
        return refuse(uid, "a window without a size");
    if (box.windows.isFull()) {
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "WindowService", __LINE__,
                                   "%s gets no window: all %u are in use\n", uid.c_str(), box.settings.windowLimit);
        return {Token::STATE_EXHAUSTED, 0};
    }
    const WindowState& window = box.windows.add(uid, settings);
    show();
    box.notices.onWindowGrant(window);
    keepNow();
    return {Token::STATE_GRANTED, window.index};
}

WindowService::Token WindowService::refuse(const std::string& uid, const std::string& reason)
{
    Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "WindowService", __LINE__, "%s gets no window: %s\n",
                               uid.c_str(), reason.c_str());
    return {Token::STATE_REFUSED, 0};
}

void WindowService::release(unsigned int index)
{
    const WindowState window = require(index);
    box.windows.remove(index);
    show();
    box.notices.onWindowRelease(window);
    keepNow();
}

void WindowService::releaseAll(const std::string& uid)
{
    for (const unsigned int index : box.windows.findIndices(uid))
        release(index);
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
    if (keepTimer == 0)
        keepTimer = box.loop.schedule(KEEP_INTERVAL, [this] { flush(); });
}

void WindowService::flush()
{
    if (keepTimer != 0)
        keepNow();
}

void WindowService::keepNow()
{
    box.loop.cancel(keepTimer);
    box.history.append(writeWindowsRecord(box.windows.getWindows()));
}

} // namespace Procmand
