#include "supervision/RestartPolicy.h"
#include "supervision/Supervisor.h"

#include <corvane/foundation/DebugPrint.h>

/// What comes after an end: the next start, after a delay or at once, or nothing more.
namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Phase = ManagedApplication::Phase;

/// So many applications that were given up are shown; they take room, and nobody may ever look after them.
constexpr std::size_t GIVEN_UP_LIMIT = 100;

} // namespace

void Supervisor::settle(ManagedApplication& application, StopPurpose purpose, const std::string& means)
{
    if (purpose == StopPurpose::RESTART && !box.isEnding) {
        application.restartsInRow = 0;
        return restartNow(application);
    }
    if (purpose == StopPurpose::STOP || purpose == StopPurpose::RESTART) {
        box.notices.onStop(application.uid, means);
        return forget(application);
    }
    restartByPolicy(application, application.isFailure(), application.process->getAge());
}

void Supervisor::restartByPolicy(ManagedApplication& application, bool failed, std::chrono::milliseconds runTime)
{
    if (box.isEnding || !application.request || !isRestartWanted(application.request->restart, failed))
        return forget(application);
    if (runTime >= box.settings.stableTime)
        application.restartsInRow = 0;
    const auto delay = findRestartDelay(application.restartsInRow, box.settings);
    if (!delay)
        return giveUp(application);
    application.phase = Phase::WAITING;
    box.note(makeStartRecord(application).write());
    box.notices.onRestartDelay(application.uid, *delay, application.restartsInRow + 1);
    application.restartTimer =
        box.loop.schedule(*delay, [this, uid = application.uid, generation = application.generation] {
            if (ManagedApplication* const waiting = box.registry.find(uid, generation)) {
                ++waiting->restartsInRow;
                restartNow(*waiting);
            }
        });
}

void Supervisor::giveUp(ManagedApplication& application)
{
    corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Supervisor", __LINE__,
                      "%s (%s) is given up after %u restarts\n", application.uid.c_str(), application.program.c_str(),
                      application.restartsInRow);
    application.phase = Phase::GIVEN_UP;
    box.remember({.uid = application.uid,
                  .text = writeGivenUpRecord(application.uid, application.program, application.restartsInRow)});
    box.note(makeStartRecord(application).write());
    box.notices.onRestartLimit(application.uid, application.restartsInRow);
    forgetTheOldest();
}

void Supervisor::forgetTheOldest()
{
    ManagedApplication* oldest = nullptr;
    std::size_t count = 0;
    for (auto& [uid, application] : box.registry.getAll())
        if (application.phase == Phase::GIVEN_UP) {
            ++count;
            if (oldest == nullptr || application.generation < oldest->generation)
                oldest = &application;
        }
    if (count > GIVEN_UP_LIMIT)
        forget(*oldest);
}

void Supervisor::restartNow(ManagedApplication& application)
{
    box.loop.cancel(application.restartTimer);
    ManagedApplication next;
    next.uid = application.uid;
    next.request = std::move(application.request);
    next.program = application.program;
    next.type = application.type;
    next.restarts = application.restarts + 1;
    next.restartsInRow = application.restartsInRow;
    next.placement = std::move(application.placement);
    next.takesPlaceBack = next.placement && !next.request->fresh;
    application = std::move(next);
    box.registry.renew(application);
    startProgram(application);
}

void Supervisor::forget(ManagedApplication& application)
{
    box.loop.cancel(application.restartTimer);
    box.note(writeGoneRecord(application.uid));
    focus.onForgotten(application.uid);
    box.registry.remove(application.uid);
    // Later: while the box is taken up, not everyone is known yet.
    box.loop.post([this] { box.dropOutput(); });
}

} // namespace Procmand
