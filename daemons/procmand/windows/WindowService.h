#pragma once

#include "box/Box.h"

#include <corvane/procman/IResourceAcquisition.h>
#include <stdexcept>

namespace Procmand
{

/// Hands out windows, changes them, and announces every change. Guarded by the lock of the box.
class WindowService
{
public:
    using Token = Corvane::IResourceAcquisition::ResourceToken;
    using Settings = Corvane::ISurfaceManagement::CreationSettings;

    explicit WindowService(Box& box);

    /// @return a token that is granted, or tells that there are no more windows or that the settings are bad; the
    /// reason is in the log
    Token grant(const std::string& uid, const Settings& settings);
    /// Logs why a request is refused.
    Token refuse(const std::string& uid, const std::string& reason);
    /// The same for a request that would be granted if there were windows left.
    Token exhaust(const std::string& uid, const std::string& reason);
    /// @throws std::out_of_range  there is no such window
    void release(unsigned int index);
    void releaseAll(const std::string& uid);
    /// Puts the windows of applications that still live where they were.
    void restore(const std::vector<WindowState>& windows);

    /// @throws std::out_of_range  there is no such window
    const WindowState& require(unsigned int index) const;
    /// Applies an operation to the stack and announces what it changes.
    template <class Operation>
    void change(Operation operation)
    {
        const std::vector<WindowState> before = box.windows.getWindows();
        operation(box.windows);
        announceChanges(before);
        keep();
    }
    /// Notes where the application's window is, if it has one, for its next process.
    void rememberPlacement(ManagedApplication& application) const;
    /// Writes what has changed into the history now.
    void flush();

private:
    void takePlaceBack(const WindowState& window);
    void announceChanges(const std::vector<WindowState>& before) const;
    /// Hands the windows to the compositor.
    void show();
    /// Shows the windows and writes their states: at once after a quiet second, else when a second has passed.
    void keep();
    void keepNow();

    Box& box;
    EventLoop::Timer keepTimer = 0;
    bool isToBeKept = false;
};

} // namespace Procmand
