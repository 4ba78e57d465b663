#include "HandlerGuard.h"
#include <corvane/APPRPCServer.h>
#include <corvane/foundation/SerialError.h>

/// The handlers of IApplication. A change of state that the application refuses is silent there, so the reply says only
/// that the call was delivered. The operations are called in their forms for remote callers; a call does not carry the
/// caller's uid, so that is empty.
namespace Corvane
{

std::string APPRPCServer::getState(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getSingleton(), [](IApplication& target) { return target.getState(std::string()); });
    });
}

std::string APPRPCServer::setState(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const auto state = deserialize<std::string>("requestedState", parameters);
        // The application's thread may be reading it.
        if (state.size() > ILifecycleManagement::LONGEST_STATE)
            throw SerialError("requestedState: longer than " + std::to_string(ILifecycleManagement::LONGEST_STATE) +
                              " bytes");
        return callTarget(request, getSingleton(),
                          [&](IApplication& target) { target.setState(std::string(), state); });
    });
}

std::string APPRPCServer::activate(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getSingleton(), [](IApplication& target) { target.activate(std::string()); });
    });
}

std::string APPRPCServer::suspend(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getSingleton(), [](IApplication& target) { target.suspend(std::string()); });
    });
}

std::string APPRPCServer::terminate(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getSingleton(), [](IApplication& target) { target.terminate(std::string()); });
    });
}

std::string APPRPCServer::getRuntimeStatistics(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getSingleton(),
                          [](IApplication& target) { return target.getRuntimeStatistics(std::string()); });
    });
}

} // namespace Corvane
