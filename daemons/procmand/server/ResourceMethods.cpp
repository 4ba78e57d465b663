#include "server/ManagerServer.h"

#include <corvane/procman/Client.h>

/// The handlers of IResourceAcquisition.
namespace Procmand
{

namespace
{

using Corvane::Client;
using Corvane::deserialize;
using Corvane::Deserializer;
using Corvane::IResourceAcquisition;
using Corvane::IRPC::RPCResultObject;
using Corvane::IRPC::RPCReturnObject;

} // namespace

void ManagerServer::fillResourceMethods()
{
    MethodTable& methods = interfaces["IResourceAcquisition"];
    methods["getResource"] = static_cast<Handler>(&ManagerServer::getResource);
    methods["releaseResource"] = static_cast<Handler>(&ManagerServer::releaseResource);
}

std::string ManagerServer::getResource(const Request& request)
{
    using CreationSettings = Corvane::ISurfaceManagement::CreationSettings;
    const auto answer = [&](const WindowService::Token& token) { return RPCResultObject(request, token).serialize(); };
    std::string uid = "a client";
    try {
        Deserializer parameters(request.getParameters());
        uid = deserialize<std::string>("uid", parameters);
        const auto pid = deserialize<unsigned int>("pid", parameters);
        if (deserialize<unsigned int>("resourceType", parameters) !=
            IResourceAcquisition::RESOURCE_TYPE_GRAPHICS_WINDOW)
            return answer(windows.refuse(uid, "there is no resource of that type"));
        if (deserialize<unsigned int>("clientType", parameters) != Client::TYPE_WINDOW)
            return answer(windows.refuse(uid, "it is no window application"));
        const auto settings = deserialize<CreationSettings>("settings", parameters);
        // A window goes with its application, so the application must be known.
        if (!supervisor.adopt(uid, static_cast<pid_t>(pid)))
            return answer(windows.refuse(uid, "its process is not there"));
        return answer(windows.grant(uid, settings));
    } catch (const Corvane::SerialError& error) {
        return answer(windows.refuse(uid, error.what()));
    }
}

std::string ManagerServer::releaseResource(const Request& request)
{
    Deserializer parameters(request.getParameters());
    windows.release(deserialize<unsigned int>("index", parameters));
    return RPCReturnObject(request).serialize();
}

} // namespace Procmand
