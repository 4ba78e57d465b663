#include "HandlerGuard.h"
#include <corvane/APPRPCServer.h>
#include <corvane/common/Service.h>

/// The handlers of IService. The server passes tokens on and keeps none itself.
namespace Corvane
{

std::string APPRPCServer::authorizationTokenCreation(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        // The attributes travel as a text inside the parameters, not as an object of theirs.
        Deserializer attributeText(deserialize<std::string>("authAttrInternal", parameters));
        const MapObject<MapObject<int>> attributes(attributeText);
        const auto token = deserialize<unsigned int>("token", parameters);
        return callTarget(request, getService(),
                          [&](Service& service) { service.createAuthorizationToken(token, attributes); });
    });
}

std::string APPRPCServer::authorizationTokenDeletion(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const auto token = deserialize<unsigned int>("token", parameters);
        return callTarget(request, getService(), [&](Service& service) { service.deleteAuthorizationToken(token); });
    });
}

} // namespace Corvane
