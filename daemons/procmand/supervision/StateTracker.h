#pragma once

#include "box/Box.h"

namespace Procmand
{

/// Knows the states of the applications, and sees to it that the box hears of each one once and in order.
///
/// An application may reach a state before it is listened to. It is asked then, and the box is told what it missed as
/// one change: from the last state that was announced to the present one. Guarded by the lock of the box.
class StateTracker
{
public:
    explicit StateTracker(Box& box);

    /// The application is listened to from now on.
    void onConnected(ManagedApplication& application);
    /// The application has told its state without announcing a change.
    void onTold(ManagedApplication& application, const std::string& state);
    /// The application has announced a change. @return whether it is news to the box
    bool onAnnounced(ManagedApplication& application, const std::string& oldState, const std::string& newState);
    /// Announces now what the box has missed so far.
    void flush(ManagedApplication& application);

private:
    void announce(ManagedApplication& application, const std::string& state);

    Box& box;
};

} // namespace Procmand
