#include "HandlerGuard.h"
#include <corvane/APPRPCServer.h>
#include <corvane/common/Service.h>
#include <corvane/foundation/SerialError.h>

/// The handlers of IService. The server passes tokens on and keeps none itself.
namespace Corvane
{

namespace
{

/// Reads the attributes of a token, which travel as a text inside the parameters, not as an object of theirs.
MapObject<MapObject<int>> readAttributes(Deserializer& parameters)
{
    const std::string key = "authAttrInternal";
    const auto text = deserialize<std::string>(key, parameters);
    try {
        Deserializer attributes(text);
        return MapObject<MapObject<int>>(attributes);
    } catch (const SerialError& error) {
        // The text does not know which parameter it was.
        throw SerialError(key + ": " + error.what());
    }
}

} // namespace

std::string APPRPCServer::authorizationTokenCreation(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const MapObject<MapObject<int>> attributes = readAttributes(parameters);
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
