#include "supervision/Stopper.h"

#include <corvane/foundation/DebugPrint.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <csignal>

namespace Procmand
{

namespace
{

enum Stage : unsigned int { ASKED, TERMINATED, KILLED, GIVEN_UP };

struct Request {
    const char* method;
    std::string parameters;
};

Request findRequest(StopPurpose purpose)
{
    if (purpose != StopPurpose::RUNAWAY)
        return {"IApplication::terminate", "{}"};
    return {"IApplication::setState",
            R"({"requestedState":")" + Corvane::ILifecycleManagement::STATE_RUNAWAY + R"("})"};
}

} // namespace

Stopper::Stopper(Box& box, Links& links) : box(box), links(links) {}

void Stopper::begin(ManagedApplication& application, StopPurpose purpose)
{
    const bool isUnderWay = application.stopTimer != 0;
    application.stopPurpose = purpose;
    if (!isUnderWay)
        enter(application, application.isConnected ? ASKED : TERMINATED);
}

void Stopper::kill(ManagedApplication& application, StopPurpose purpose)
{
    if (application.stopPurpose == StopPurpose::NONE)
        application.stopPurpose = purpose;
    if (application.stopTimer == 0 || application.stopStage < KILLED)
        enter(application, KILLED);
}

std::string Stopper::finish(ManagedApplication& application)
{
    box.loop.cancel(application.stopTimer);
    application.stopPurpose = StopPurpose::NONE;
    return application.stopStage == ASKED ? "terminate" : application.stopStage == TERMINATED ? "SIGTERM" : "SIGKILL";
}

void Stopper::enter(ManagedApplication& application, unsigned int stage)
{
    box.loop.cancel(application.stopTimer);
    application.stopStage = stage;
    if (stage == ASKED)
        ask(application);
    else if (stage == TERMINATED)
        signal(application, SIGTERM, box.settings.termDeadline);
    else if (stage == KILLED)
        signal(application, SIGKILL, box.settings.killDeadline);
    else
        giveUp(application);
}

void Stopper::ask(ManagedApplication& application)
{
    const StopPurpose purpose = application.stopPurpose;
    const Settings::Duration deadline =
        purpose == StopPurpose::RUNAWAY ? box.settings.callDeadline : box.settings.terminateDeadline;
    enterLater(application, deadline, TERMINATED);
    try {
        const Request request = findRequest(purpose);
        links.call(application, request.method, request.parameters,
                   [this, uid = application.uid](const std::string* result, const std::string& problem) {
                       if (result == nullptr)
                           onRefusal(uid, problem);
                   });
    } catch (const Corvane::RPCError& error) {
        onRefusal(application.uid, error.what());
    }
}

void Stopper::onRefusal(const std::string& uid, const std::string& problem)
{
    Corvane::corvaneDebugPrint(Corvane::DEBUG_INFO, "procmand", "Stopper", __LINE__, "%s: %s\n", uid.c_str(),
                               problem.c_str());
    ManagedApplication& application = box.registry.require(uid);
    if (application.isAlive() && application.stopTimer != 0 && application.stopStage == ASKED)
        enter(application, TERMINATED);
}

void Stopper::signal(ManagedApplication& application, int signal, Settings::Duration deadline)
{
    application.process->sendSignal(signal);
    enterLater(application, deadline, application.stopStage + 1);
}

void Stopper::giveUp(ManagedApplication& application)
{
    const char* const reason = "it did not end after SIGKILL";
    Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Stopper", __LINE__, "%s: %s\n",
                               application.uid.c_str(), reason);
    // Its purpose stays: should the process end after all, it is not started again against somebody's will.
    box.notices.onStopFailure(application.uid, reason);
}

void Stopper::enterLater(ManagedApplication& application, Settings::Duration delay, unsigned int stage)
{
    application.stopTimer =
        box.loop.schedule(delay, [this, uid = application.uid, generation = application.generation, stage] {
            if (ManagedApplication* const late = box.registry.find(uid, generation); late != nullptr && late->isAlive())
                enter(*late, stage);
        });
}

} // namespace Procmand
