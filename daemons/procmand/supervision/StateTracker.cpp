#include "supervision/StateTracker.h"

namespace Procmand
{

namespace
{

/// An application has its new state before it announces it: an answer may overtake the announcement of what it tells.
/// So long that is waited for.
constexpr std::chrono::milliseconds OVERTAKING_TIME{200};

} // namespace

StateTracker::StateTracker(Box& box) : box(box) {}

void StateTracker::onConnected(ManagedApplication& application)
{
    flush(application);
    application.hearing = Hearing::NOTHING;
}

void StateTracker::onTold(ManagedApplication& application, const std::string& state)
{
    if (application.hearing != Hearing::NOTHING)
        return; // what is known already is at least as new
    application.hearing = Hearing::ASKED;
    if (!application.ranAway) {
        if (state != application.announcedState)
            application.previousState = application.announcedState;
        application.state = state;
    }
    application.lateState = state;
    application.lateStateTimer =
        box.loop.schedule(OVERTAKING_TIME, [this, uid = application.uid, generation = application.generation] {
            if (ManagedApplication* const told = box.registry.find(uid, generation))
                flush(*told);
        });
}

bool StateTracker::onAnnounced(ManagedApplication& application, const std::string& oldState,
                               const std::string& newState)
{
    const Hearing hearing = std::exchange(application.hearing, Hearing::ANNOUNCED);
    const bool wasFlushed = hearing == Hearing::ASKED && application.lateState.empty();
    application.previousState = oldState;
    application.state = newState;
    // The state was there when the application was asked; only its announcement is late.
    if (wasFlushed && newState == application.announcedState)
        return false;
    // This tells better than the answer from where the application came.
    application.lateState.clear();
    box.loop.cancel(application.lateStateTimer);
    if (hearing != Hearing::ANNOUNCED && !wasFlushed)
        announce(application, oldState);
    application.announcedState = newState;
    return true;
}

void StateTracker::flush(ManagedApplication& application)
{
    box.loop.cancel(application.lateStateTimer);
    if (!application.lateState.empty())
        announce(application, std::exchange(application.lateState, {}));
}

void StateTracker::announce(ManagedApplication& application, const std::string& state)
{
    if (state != application.announcedState)
        box.notices.onStateChange(application.uid, std::exchange(application.announcedState, state), state);
}

} // namespace Procmand
