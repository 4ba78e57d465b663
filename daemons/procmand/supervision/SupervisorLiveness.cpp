#include "supervision/Supervisor.h"

#include <corvane/foundation/DebugPrint.h>
#include <corvane/interfaces/ILifecycleManagement.h>

/// How an application proves that it lives, and what comes of it when it does not.
namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Corvane::ILifecycleManagement;

/// A deadline that is noticed so late passed while this process itself was held up.
constexpr std::chrono::seconds HELD_UP{1};

} // namespace

void Supervisor::onKeepAlive(ManagedApplication& application, const std::string& state)
{
    application.wasAlive = true;
    if (state != ILifecycleManagement::STATE_ABORTED) {
        if (!application.end)
            awaitKeepAlive(application);
        return;
    }
    // No sign of life: the thread that says so goes on while another one hangs in the handler of a fatal signal.
    states.onTold(application, state);
    noteAbort(application, state);
}

void Supervisor::makeUpForKeepAlive(ManagedApplication& application, const std::string& state)
{
    // An application proves that it lives as soon as it initialises, which may be before it is listened to. Its answer
    // proves the same.
    const bool hasBegun =
        state != ILifecycleManagement::STATE_UNINITIALIZED && !ILifecycleManagement::isApplicationTerminated(state);
    if (hasBegun && !std::exchange(application.wasAlive, true))
        box.notices.onKeepAlive(application.uid, state);
}

void Supervisor::awaitKeepAlive(ManagedApplication& application)
{
    // The timer is left as it is: it finds out by itself that there was a sign since.
    application.lastSign = ManagedApplication::Clock::now();
    if (application.keepAliveTimer == 0)
        scheduleCheck(application, box.settings.keepAliveDeadline);
}

void Supervisor::scheduleCheck(ManagedApplication& application, ManagedApplication::Clock::duration silence)
{
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(silence);
    application.keepAliveTimer =
        box.loop.schedule(delay, [this, uid = application.uid, generation = application.generation,
                                  late = ManagedApplication::Clock::now() + delay + HELD_UP] {
            ManagedApplication* const watched = box.registry.find(uid, generation);
            if (watched != nullptr && watched->isAlive())
                checkKeepAlive(*watched, late);
        });
}

void Supervisor::checkKeepAlive(ManagedApplication& application, ManagedApplication::Clock::time_point late)
{
    application.keepAliveTimer = 0;
    const auto now = ManagedApplication::Clock::now();
    const auto deadline = application.lastSign + box.settings.keepAliveDeadline;
    // What the applications said while this process was held up is still on its way.
    if (now > late)
        awaitKeepAlive(application);
    else if (now < deadline)
        scheduleCheck(application, deadline - now);
    else
        onRunaway(application);
}

void Supervisor::onRunaway(ManagedApplication& application)
{
    // Who is being stopped already goes that way.
    if (application.stopPurpose != StopPurpose::NONE)
        return;
    corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Supervisor", __LINE__, "%s has run away: no keep-alive\n",
                      application.uid.c_str());
    application.ranAway = true;
    application.previousState = std::exchange(application.state, ILifecycleManagement::STATE_RUNAWAY);
    box.notices.onRunaway(application.uid, application.process->getPid());
    beginStop(application, StopPurpose::RUNAWAY);
}

void Supervisor::noteAbort(ManagedApplication& application, const std::string& state)
{
    if (state != ILifecycleManagement::STATE_ABORTED)
        return box.loop.cancel(application.abortTimer);
    if (application.abortTimer == 0 && !application.ranAway && application.isAlive())
        application.abortTimer = box.loop.schedule(
            box.settings.abortDeadline, [this, uid = application.uid, generation = application.generation] {
                if (ManagedApplication* const hung = box.registry.find(uid, generation); hung && hung->isAlive())
                    onHungCrash(*hung);
            });
}

void Supervisor::onHungCrash(ManagedApplication& application)
{
    application.abortTimer = 0;
    corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Supervisor", __LINE__,
                      "%s has aborted and still lives: it is killed\n", application.uid.c_str());
    application.ranAway = true;
    box.notices.onRunaway(application.uid, application.process->getPid());
    windows.rememberPlacement(application);
    stopper.kill(application, StopPurpose::RUNAWAY);
}

} // namespace Procmand
