#include "server/ManagerServer.h"

#include <corvane/procman/Client.h>

/// The handlers of IResourceAcquisition.
namespace Procmand
{

namespace
{

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
        const auto pid = static_cast<pid_t>(deserialize<unsigned int>("pid", parameters));
        if (deserialize<unsigned int>("resourceType", parameters) !=
            IResourceAcquisition::RESOURCE_TYPE_GRAPHICS_WINDOW)
            return answer(windows.refuse(uid, "there is no resource of that type"));
        if (deserialize<unsigned int>("clientType", parameters) != Corvane::Client::TYPE_WINDOW)
            return answer(windows.refuse(uid, "it is no window application"));
        const auto settings = deserialize<CreationSettings>("settings", parameters);
        // A window goes with its application, so the application must be known.
        takeUp(request, uid, pid);
        if (hasItsWindows())
            return answer(windows.exhaust(uid, "it or its user has as many as one may have"));
        return answer(windows.grant(uid, settings));
    } catch (const std::runtime_error& error) {
        return answer(windows.refuse(uid, error.what()));
    }
}

std::string ManagerServer::releaseResource(const Request& request)
{
    windows.release(requireWindow(request).index);
    return RPCReturnObject(request).serialize();
}

} // namespace Procmand
