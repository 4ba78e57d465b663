#pragma once

#include <corvane/foundation/Mutex.h>
#include <cstddef>
#include <mutex>
#include <vector>

namespace Corvane
{

/// Calls every listener in turn, with no lock held, so that a listener may change the list or raise further
/// notifications.
/// @param mutex    guards `listeners` and `changed`; free while a listener runs
/// @param changed  set by whoever changes the list; cleared here
template <class Listener, class Call>
void walkListeners(Mutex& mutex, const std::vector<Listener*>& listeners, bool& changed, Call call)
{
    std::unique_lock<Mutex> lock(mutex);
    // An index, since the list may be another one after each call.
    for (std::size_t position = 0; position < listeners.size(); ++position) {
        Listener* const listener = listeners[position];
        lock.unlock();
        if (listener != nullptr)
            call(*listener);
        lock.lock();
        // Deliberate: the walk advances after it was set back, so it goes on with the second entry. The first is not
        // called again, others may be called twice, and a list that has become empty ends the walk.
        if (changed) {
            position = 0;
            changed = false;
        }
    }
}

} // namespace Corvane
