#pragma once

#include "../../platform/common/src/SignalMask.h"
#include "InterruptibleMutex.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <vector>

namespace Corvane
{

/// Calls every listener in turn, with no lock held, so that a listener may change the list or raise further
/// notifications. A signal handler may walk a list whose walk or change it has interrupted.
/// @param mutex    guards `listeners` and `changed`; free while a listener runs
/// @param changed  set by whoever changes the list; cleared here
template <class Listener, class Call>
void walkListeners(Mutex& mutex, const std::vector<Listener*>& listeners, bool& changed, Call call)
{
    InterruptibleMutex interruptible(mutex);
    std::unique_lock lock(interruptible);
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

/// Adds a listener at the end of a list that `walkListeners` walks, unless it is null or there already.
template <class Listener>
void addToWalk(Mutex& mutex, std::vector<Listener*>& listeners, bool& changed, Listener* wanted)
{
    InterruptibleMutex interruptible(mutex);
    const std::lock_guard guard(interruptible);
    if (wanted == nullptr || std::find(listeners.begin(), listeners.end(), wanted) != listeners.end())
        return;
    // The heap may fault here, and free the old list below: a handler finds a whole list at both places.
    std::vector<Listener*> longer;
    longer.reserve(listeners.size() + 1);
    longer = listeners;
    longer.push_back(wanted);
    const SignalMask mask(SIG_BLOCK, SignalMask::allSignals());
    listeners.swap(longer);
    changed = true;
}

/// Takes a listener off such a list, if it is there.
template <class Listener>
void removeFromWalk(Mutex& mutex, std::vector<Listener*>& listeners, bool& changed, Listener* unwanted)
{
    InterruptibleMutex interruptible(mutex);
    const std::lock_guard guard(interruptible);
    const auto entry = std::find(listeners.begin(), listeners.end(), unwanted);
    if (unwanted == nullptr || entry == listeners.end())
        return;
    const SignalMask mask(SIG_BLOCK, SignalMask::allSignals());
    listeners.erase(entry);
    changed = true;
}

} // namespace Corvane
