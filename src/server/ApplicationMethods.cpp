#include "HandlerGuard.h"
#include <corvane/APPRPCServer.h>
#include <corvane/foundation/SerialError.h>
#include <cstddef>

/// The handlers of IApplication. A change of state that the application refuses is silent there, so the reply says only
/// that the call was delivered. The operations are called in their forms for remote callers; a call does not carry the
/// caller's uid, so that is empty.
namespace Corvane
{

namespace
{

/// In bytes. An application keeps room for that much, so that its state can be read while it is replaced.
constexpr std::size_t LONGEST_STATE = 255;

} // namespace

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
        if (state.size() > LONGEST_STATE)
            throw SerialError("requestedState: longer than 255 bytes");
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
