#include "supervision/Supervisor.h"

#include "box/Containment.h"
#include "box/ServerSocket.h"
#include "launch/Launcher.h"
#include "launch/Remains.h"
#include "launch/Token.h"

#include <algorithm>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Deserializer.h>
#include <corvane/interfaces/IApplicationManager.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <stdexcept>
#include <system_error>

namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Corvane::ILifecycleManagement;
using Phase = ManagedApplication::Phase;

/// How long the last words of a process that has ended are waited for.
constexpr std::chrono::seconds LAST_WORDS_DEADLINE{1};
/// How soon it is tried again to watch a process that the system had no room to watch.
constexpr std::chrono::seconds WATCH_DELAY{1};

/// @return the application type that a command line gives, empty for none
std::string findType(std::vector<std::string> command)
{
    std::vector<char*> words;
    for (std::string& word : command)
        words.push_back(word.data());
    return Corvane::IApplicationManager::LaunchParameters(static_cast<int>(words.size()), words.data())
        .getApplicationType();
}

} // namespace

Supervisor::Supervisor(Box& box, FocusControl& focus, WindowService& windows)
    : box(box), focus(focus), windows(windows), states(box), links(box, *this), stopper(box, links)
{
}

void Supervisor::start(const std::string& folder)
{
    links.start(folder);
}

std::string Supervisor::launch(LaunchRequest request)
{
    if (box.isEnding)
        throw std::runtime_error("the process manager is ending");
    takeWords(request);
    ManagedApplication& application = box.registry.add(request.uid.empty() ? makeToken() : request.uid);
    application.program = request.program;
    application.type = request.applicationType;
    application.request = std::move(request);
    try {
        startProgram(application);
    } catch (const std::bad_alloc&) {
        box.registry.remove(application.uid); // nothing is being started
        throw;
    }
    return application.uid;
}

void Supervisor::takeWords(const LaunchRequest& request)
{
    for (const std::string& word : {request.name, request.uid}) {
        const ManagedApplication* const holder = box.registry.findHolder(word);
        if (holder != nullptr && holder->phase != Phase::GIVEN_UP)
            throw std::runtime_error(
                word + " is taken: it is the " +
                (word == holder->uid ? "uid of an application" : "name of an application, " + holder->uid));
    }
    if (!request.uid.empty() && findServer(serverNameOf(request.uid)))
        throw std::runtime_error(request.uid + " is taken: a process that was not launched here has it");
    for (const std::string& word : {request.name, request.uid})
        if (ManagedApplication* const holder = box.registry.findHolder(word))
            forget(*holder);
}

void Supervisor::startProgram(ManagedApplication& application)
{
    application.phase = Phase::STARTING;
    LaunchRequest request = *application.request;
    if (application.takesPlaceBack)
        request.compositingParameters = application.placement->apply(request.compositingParameters);
    application.mark = makeToken();
    // Before anything else: should this process manager be killed, the next one starts the program.
    box.note(makeStartRecord(application).write());
    box.workers.run([this, uid = application.uid, generation = application.generation, mark = application.mark,
                     request = std::move(request)] {
        const std::string problem = runProgram(uid, generation, mark, request);
        // What came of it must be known, however short memory is.
        insist([&] {
            box.loop.post([this, uid, generation, problem] {
                ManagedApplication* const application = box.registry.find(uid, generation);
                if (problem.empty())
                    onStarted(*application);
                else
                    onStartFailure(*application, problem);
            });
        });
    });
}

std::string Supervisor::runProgram(const std::string& uid, unsigned long generation, const std::string& mark,
                                   const LaunchRequest& request)
{
    try {
        const StartPlan plan = planLaunch(request, uid, mark, box.files);
        Starter starter(plan);
        enclose(mark, starter.getPid());
        // Before the program runs: should this process manager be killed, there is none that the next one does not
        // know.
        noteProcess(uid, generation, starter.getPid());
        if (const int reason = starter.run(); reason != 0)
            throw std::system_error(reason, std::generic_category(), "cannot start " + request.program);
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

void Supervisor::noteProcess(const std::string& uid, unsigned long generation, pid_t pid)
{
    std::optional<Process> process = Process::find(pid, true);
    if (!process)
        throw std::system_error(errno, std::generic_category(), "cannot watch " + uid);
    std::lock_guard guard(box.lock);
    ManagedApplication& application = *box.registry.find(uid, generation);
    application.process = std::move(process);
    box.note(makeStartRecord(application).write());
}

void Supervisor::onStarted(ManagedApplication& application)
{
    watch(application);
    box.notices.onLaunch(application.uid, application.process->getPid(), application.program, application.restarts);
    // It may have been asked to stop while it was being started.
    if (application.stopPurpose != StopPurpose::NONE)
        beginStop(application, application.stopPurpose);
}

void Supervisor::onStartFailure(ManagedApplication& application, const std::string& reason)
{
    application.process.reset();
    removeRemains(application); // its cgroup
    corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Supervisor", __LINE__, "%s: %s\n", application.uid.c_str(),
                      reason.c_str());
    box.notices.onLaunchFailure(application.uid, application.program, reason);
    if (application.stopPurpose == StopPurpose::STOP)
        box.notices.onStop(application.uid, "terminate");
    // What has run before may run again, for instance when an update of its program is complete.
    if (application.restarts > 0 && application.stopPurpose != StopPurpose::STOP)
        return restartByPolicy(application, true, std::chrono::milliseconds::zero());
    forget(application);
}

void Supervisor::watch(ManagedApplication& application)
{
    application.phase = Phase::RUNNING;
    application.wasAlive = false;
    watchProcess(application);
    links.connect(application);
}

void Supervisor::watchProcess(ManagedApplication& application)
{
    const auto onLoop = [this, uid = application.uid, generation = application.generation](auto step) {
        return [this, uid, generation, step] {
            if (ManagedApplication* const watched = box.registry.find(uid, generation))
                (this->*step)(*watched);
        };
    };
    try {
        box.loop.watch(application.process->getDescriptor(), onLoop(&Supervisor::onProcessEnd));
    } catch (const std::system_error& error) {
        corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Supervisor", __LINE__, "%s: %s; tried again\n",
                          application.uid.c_str(), error.what());
        box.loop.schedule(WATCH_DELAY, onLoop(&Supervisor::watchProcess));
    }
}

void Supervisor::adopt(const std::string& uid, Process process)
{
    ManagedApplication& application = box.registry.add(uid);
    const std::vector<std::string> command = process.readCommand();
    application.program = command.empty() ? std::string() : command.front();
    application.type = findType(command);
    const pid_t pid = process.getPid();
    application.process = std::move(process);
    watch(application);
    box.note(makeStartRecord(application).write());
    box.notices.onRegister(uid, pid, application.program);
}

void Supervisor::greet(ManagedApplication& application)
{
    if (application.isAlive())
        links.connect(application);
}

void Supervisor::recover(const Recovery::Application& recovered)
{
    const StartRecord& start = recovered.start;
    if (start.boot != readBoot() || box.registry.find(start.uid) != nullptr)
        return;
    std::optional<Process> process = Process::find(start.pid, start.request.has_value());
    const bool lives =
        !recovered.hasEnded && process && !process->hasEnded() && process->getStartTime() == start.startTime;
    ManagedApplication& application = box.registry.add(start.uid);
    application.program = start.program;
    application.request = start.request;
    application.type = start.type;
    application.mark = start.mark;
    application.restarts = start.restarts;
    application.restartsInRow = start.restartsInRow;
    application.placement = start.placement;
    if (lives) {
        application.process = std::move(process);
        return watch(application);
    }
    if (start.phase == StartRecord::GIVEN_UP) {
        application.phase = Phase::GIVEN_UP;
        return;
    }
    if (start.phase == StartRecord::STARTING && start.request) {
        application.takesPlaceBack = application.placement && !application.request->fresh;
        return startProgram(application);
    }
    application.end.emplace();
    if (!recovered.hasEnded)
        recordEnd(application, start.pid);
    links.removeSocket(start.uid);
    removeRemains(application);
    // Nobody knows how long it ran; at most since its start.
    const auto longest = recovered.hasEnded ? std::chrono::milliseconds::zero() : Process::findAge(start.startTime);
    restartByPolicy(application, true, longest);
}

void Supervisor::beginStop(ManagedApplication& application, StopPurpose purpose)
{
    windows.rememberPlacement(application);
    stopper.begin(application, purpose);
}

void Supervisor::stop(const std::string& uid)
{
    ManagedApplication& application = box.registry.require(uid);
    if (application.isAlive())
        return beginStop(application, StopPurpose::STOP);
    application.stopPurpose = StopPurpose::STOP;
    if (!application.isAtRest())
        return; // it is being started, or its end is being noted
    box.notices.onStop(uid, "terminate");
    forget(application);
}

void Supervisor::restart(const std::string& uid)
{
    ManagedApplication& application = box.registry.require(uid);
    if (!application.request)
        throw std::runtime_error("the application " + uid + " was started by hand");
    if (application.isAlive())
        return beginStop(application, StopPurpose::RESTART);
    if (application.isAtRest()) {
        application.restartsInRow = 0;
        return restartNow(application);
    }
    application.stopPurpose = StopPurpose::RESTART;
}

bool Supervisor::stopAll()
{
    std::vector<std::string> launched;
    for (const auto& [uid, application] : box.registry.getAll())
        if (application.request)
            launched.push_back(uid);
    for (const std::string& uid : launched)
        if (box.registry.require(uid).stopPurpose != StopPurpose::STOP)
            stop(uid);
    return !launched.empty();
}

void Supervisor::disconnectAll()
{
    for (auto& [uid, application] : box.registry.getAll())
        links.disconnect(application);
}

bool Supervisor::isStarting()
{
    const auto& all = box.registry.getAll();
    return std::any_of(all.begin(), all.end(), [](const auto& entry) { return entry.second.phase == Phase::STARTING; });
}

void Supervisor::onConnected(ManagedApplication& application)
{
    states.onConnected(application);
    awaitKeepAlive(application);
}

void Supervisor::onDisconnected(ManagedApplication& application)
{
    box.loop.cancel(application.keepAliveTimer);
    if (application.end)
        finishEnd(application);
}

void Supervisor::onSilence(ManagedApplication& application)
{
    if (application.keepAliveTimer == 0)
        awaitKeepAlive(application);
}

void Supervisor::onNotification(ManagedApplication& application, const std::string& name, const std::string& payload)
{
    try {
        Corvane::Deserializer deserializer(payload);
        // An application speaks for itself only, and in the interfaces of applications.
        if (Corvane::deserialize<std::string>("uid", deserializer) != application.uid ||
            (!name.starts_with("IApplication::on") && !name.starts_with("IWindow::on")) ||
            name.find_first_of("\"\\\n") != name.npos)
            return;
        if (name == "IApplication::onStateChange")
            return onStateChange(application, payload, deserializer);
        if (name == "IApplication::onKeepAlive")
            onKeepAlive(application, Corvane::deserialize<std::string>("state", deserializer));
        box.notices.pass(name, payload);
        if (name == "IWindow::onFocusChange")
            focus.onAnnounced(application.uid, Corvane::deserialize<bool>("newIsFocused", deserializer));
    } catch (const Corvane::SerialError&) {
        // What an application says wrongly is its own affair.
    }
}

void Supervisor::onStateChange(ManagedApplication& application, const std::string& payload,
                               Corvane::Deserializer& deserializer)
{
    const auto newState = Corvane::deserialize<std::string>("newState", deserializer);
    if (states.onAnnounced(application, Corvane::deserialize<std::string>("oldState", deserializer), newState))
        box.notices.pass("IApplication::onStateChange", payload);
    noteAbort(application, newState);
    giveFocusBack(application);
}

void Supervisor::onState(ManagedApplication& application, const std::string& state, bool isFocused)
{
    makeUpForKeepAlive(application, state);
    // What the application has announced in the meantime is newer.
    if (application.hearing == Hearing::ANNOUNCED)
        return;
    states.onTold(application, state);
    noteAbort(application, state);
    focus.onAnnounced(application.uid, isFocused);
    giveFocusBack(application);
}

void Supervisor::giveFocusBack(const ManagedApplication& application)
{
    // Not sooner: a window that initialises begins without the focus.
    if (application.state == ILifecycleManagement::STATE_RUNNING && application.request && !application.request->fresh)
        focus.onReturned(application.uid);
}

void Supervisor::onProcessEnd(ManagedApplication& application)
{
    box.loop.unwatch(application.process->getDescriptor());
    box.loop.cancel(application.keepAliveTimer);
    box.loop.cancel(application.abortTimer);
    application.end = application.process->reap();
    if (!application.isConnected)
        return finishEnd(application);
    // Its last notification, that it was aborted above all, may still be on its way.
    application.lastWordsTimer =
        box.loop.schedule(LAST_WORDS_DEADLINE, [this, uid = application.uid, generation = application.generation] {
            if (ManagedApplication* const silent = box.registry.find(uid, generation))
                finishEnd(*silent);
        });
}

void Supervisor::finishEnd(ManagedApplication& application)
{
    // The end, and what comes of it.
    const History::Whole whole(box.history);
    box.loop.cancel(application.lastWordsTimer);
    states.flush(application);
    // What is still on its way from this process comes too late.
    box.registry.renew(application);
    links.disconnect(application);
    links.removeSocket(application.uid);
    removeRemains(application);
    recordEnd(application, application.process->getPid());
    focus.onGone(application.uid);
    windows.releaseAll(application.uid);
    const StopPurpose purpose = application.stopPurpose;
    settle(application, purpose, stopper.finish(application));
}

void Supervisor::removeRemains(const ManagedApplication& application)
{
    if (!application.mark.empty())
        box.workers.run([mark = application.mark] { killRemains(mark); });
}

void Supervisor::recordEnd(const ManagedApplication& application, pid_t pid)
{
    const auto readTail = [&](OutputFiles::Stream stream) {
        return application.request ? box.files.readTail(application.uid, stream) : std::string();
    };
    const StopPurpose purpose = application.stopPurpose;
    const EndRecord record{.time = tellTime(),
                           .uid = application.uid,
                           .pid = pid,
                           .program = application.program,
                           .name = application.getName(),
                           .end = *application.end,
                           .state = application.state,
                           .previousState = application.previousState,
                           .ranAway = application.ranAway,
                           .wasStopped = purpose == StopPurpose::STOP || purpose == StopPurpose::RESTART,
                           .restarts = application.restarts,
                           .standardOutput = readTail(OutputFiles::Stream::OUTPUT),
                           .standardError = readTail(OutputFiles::Stream::ERROR)};
    box.remember({.uid = record.uid, .text = record.write()});
    if (application.isFailure())
        corvaneDebugPrint(record.wasStopped ? Corvane::DEBUG_INFO : Corvane::DEBUG_WARNING, "procmand", "Supervisor",
                          __LINE__, "%s (%s) has ended: %s, state %s%s\n", record.uid.c_str(), record.program.c_str(),
                          record.end.describe().c_str(), record.state.empty() ? "unknown" : record.state.c_str(),
                          record.wasStopped ? ", stopped" : "");
    box.notices.onEnd(record);
}

} // namespace Procmand
