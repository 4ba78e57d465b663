#include "access/LaunchRules.h"
#include "server/JsonValue.h"
#include "server/ManagerServer.h"

#include <corvane/foundation/ValueObjects.h>

/// The handlers of IApplicationManager.
namespace Procmand
{

namespace
{

using Corvane::deserialize;
using Corvane::Deserializer;
using Corvane::Serializer;
using Corvane::IRPC::RPCResultObject;
using Corvane::IRPC::RPCReturnObject;

/// An answer must fit into what a connection may have queued.
constexpr std::size_t HISTORY_SIZE_LIMIT = 512 * 1024;

const char* nameOf(const ManagedApplication& application)
{
    switch (application.phase) {
    case ManagedApplication::Phase::STARTING:
        return "starting";
    case ManagedApplication::Phase::WAITING:
        return "waiting";
    case ManagedApplication::Phase::GIVEN_UP:
        return "given-up";
    default:
        return application.stopPurpose == StopPurpose::NONE ? "running" : "stopping";
    }
}

void writeProcess(const ManagedApplication& application, Serializer& serializer)
{
    if (!application.isAlive())
        return serializer.writeNull("pid");
    serializer.writeInteger("pid", application.process->getPid());
    const auto uptime = std::chrono::floor<std::chrono::seconds>(application.process->getAge());
    serializer.writeUnsigned("uptimeSeconds", static_cast<unsigned int>(uptime.count()));
    if (const auto usage = application.process->readUsage()) {
        serializer.writeJson("processorMs", std::to_string(usage->processorMs));
        serializer.writeJson("residentKb", std::to_string(usage->residentKb));
    }
}

void write(const ManagedApplication& application, Box& box, bool isFocused, Serializer& serializer)
{
    serializer.beginObject("");
    serializer.writeString("uid", application.uid);
    application.writeIdentity(serializer);
    serializer.writeString("phase", nameOf(application));
    if (application.state.empty())
        serializer.writeNull("state");
    else
        serializer.writeString("state", application.state);
    serializer.writeBoolean("hasServer", application.isConnected);
    serializer.writeBoolean("focus", isFocused);
    const auto indices = box.windows.findIndices(application.uid);
    if (indices.empty())
        serializer.writeNull("zOrder");
    else
        serializer.writeUnsigned("zOrder", box.windows.find(indices.back())->zOrder);
    serializer.writeUnsigned("restarts", application.restarts);
    serializer.writeUnsigned("restartsInRow", application.restartsInRow);
    serializer.writeString("restart",
                           application.request ? nameOf(application.request->restart) : std::string("never"));
    writeProcess(application, serializer);
    serializer.endObject("");
}

} // namespace

void ManagerServer::fillApplicationMethods()
{
    MethodTable& methods = interfaces["IApplicationManager"];
    methods["launch"] = static_cast<Handler>(&ManagerServer::launch);
    methods["stop"] = static_cast<Handler>(&ManagerServer::stop);
    methods["restart"] = static_cast<Handler>(&ManagerServer::restart);
    methods["registerApplication"] = static_cast<Handler>(&ManagerServer::registerApplication);
    methods["getApplications"] = static_cast<Handler>(&ManagerServer::getApplications);
    methods["getHistory"] = static_cast<Handler>(&ManagerServer::getHistory);
    methods["getAudit"] = static_cast<Handler>(&ManagerServer::getAudit);
}

std::string ManagerServer::launch(const Request& request)
{
    LaunchRequest wanted = LaunchRequest::read(request.getParameters());
    const Caller& caller = client->getCaller();
    settleUser(wanted, caller, client->getRights(), box.policy);
    if (!caller.isTrusted())
        box.quotas.countLaunch(caller.getUser());
    const std::string uid = supervisor.launch(std::move(wanted));
    return RPCResultObject(request, Corvane::StringObject(uid)).serialize();
}

std::string ManagerServer::stop(const Request& request)
{
    Deserializer parameters(request.getParameters());
    supervisor.stop(deserialize<std::string>("uid", parameters));
    return RPCReturnObject(request).serialize();
}

std::string ManagerServer::restart(const Request& request)
{
    Deserializer parameters(request.getParameters());
    supervisor.restart(deserialize<std::string>("uid", parameters));
    return RPCReturnObject(request).serialize();
}

std::string ManagerServer::registerApplication(const Request& request)
{
    Deserializer parameters(request.getParameters());
    const auto uid = deserialize<std::string>("uid", parameters);
    takeUp(request, uid, deserialize<int>("pid", parameters));
    return RPCReturnObject(request).serialize();
}

std::string ManagerServer::getApplications(const Request& request)
{
    Serializer serializer;
    serializer.beginArray("");
    for (const auto& [uid, application] : box.registry.getAll())
        write(application, box, uid == focus.getFocused(), serializer);
    serializer.endArray("");
    return RPCResultObject(request, JsonValue(serializer.generate())).serialize();
}

std::string ManagerServer::getHistory(const Request& request)
{
    Deserializer parameters(request.getParameters());
    std::size_t wanted = PAST_LIMIT;
    if (parameters.hasMember("limit"))
        wanted = deserialize<unsigned int>("limit", parameters);
    std::deque<std::string> answered; // the last ones, in their order
    std::size_t size = 0;
    for (auto record = box.past.rbegin(); record != box.past.rend() && answered.size() < wanted; ++record) {
        size += record->text.size();
        if (size > HISTORY_SIZE_LIMIT)
            break;
        answered.push_front(record->text);
    }
    Serializer serializer;
    serializer.beginArray("");
    for (const std::string& record : answered)
        serializer.writeJson("", record);
    serializer.endArray("");
    return RPCResultObject(request, JsonValue(serializer.generate())).serialize();
}

std::string ManagerServer::getAudit(const Request& request)
{
    Deserializer parameters(request.getParameters());
    std::size_t wanted = 2 * Audit::LIMIT;
    if (parameters.hasMember("limit"))
        wanted = deserialize<unsigned int>("limit", parameters);
    return RPCResultObject(request, JsonValue(box.audit.write(wanted))).serialize();
}

} // namespace Procmand
