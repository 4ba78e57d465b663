#include "HandlerGuard.h"
#include <corvane/APPRPCServer.h>
#include <corvane/Window.h>

/// The handlers of IWindow. The operations are called in their forms for remote callers; a call does not carry the
/// caller's uid, so that is empty.
namespace Corvane
{

namespace
{

std::string answerDone(const IRPC::RPCSynchronousMethodObject& request)
{
    return IRPC::RPCReturnObject(request).serialize();
}

} // namespace

std::string APPRPCServer::handleFocus(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const bool obtained = deserialize<bool>("obtained", parameters);
        return callTarget(request, getWindow(), [&](IWindow& window) { window.handleFocus(std::string(), obtained); });
    });
}

std::string APPRPCServer::isFocused(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getWindow(), [](IWindow& window) { return window.isFocused(std::string()); });
    });
}

std::string APPRPCServer::handleEvent(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const std::shared_ptr<IWindowEvent::InputEvent> event =
            createSerialObject<IWindowEvent::InputEvent>("event", parameters);
        return callTarget(request, getWindow(),
                          [&](IWindow& window) { return window.handleEvent(std::string(), *event); });
    });
}

std::string APPRPCServer::setVisibility(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const bool visibility = deserialize<bool>("visibility", parameters);
        return callTarget(request, getWindow(),
                          [&](IWindow& window) { window.setVisibility(std::string(), visibility); });
    });
}

std::string APPRPCServer::getVisibility(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getWindow(), [](IWindow& window) { return window.getVisibility(std::string()); });
    });
}

std::string APPRPCServer::setOpacity(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const auto opacity = deserialize<unsigned int>("opacity", parameters);
        return callTarget(request, getWindow(), [&](IWindow& window) { window.setOpacity(std::string(), opacity); });
    });
}

std::string APPRPCServer::getOpacity(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getWindow(), [](IWindow& window) { return window.getOpacity(std::string()); });
    });
}

std::string APPRPCServer::setZOrder(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const auto zOrder = deserialize<unsigned int>("zorder", parameters);
        return callTarget(request, getWindow(), [&](IWindow& window) { window.setZOrder(std::string(), zOrder); });
    });
}

std::string APPRPCServer::getZOrder(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getWindow(), [](IWindow& window) { return window.getZOrder(std::string()); });
    });
}

std::string APPRPCServer::setLocation(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        Deserializer parameters(request.getParameters());
        const auto location = deserialize<ISurfaceCompositing::Rect>("location", parameters);
        return callTarget(request, getWindow(), [&](IWindow& window) { window.setLocation(std::string(), location); });
    });
}

std::string APPRPCServer::getLocation(const IRPC::RPCSynchronousMethodObject& request)
{
    return guardHandler(__func__, request, [&] {
        return callTarget(request, getWindow(), [](IWindow& window) { return window.getLocation(std::string()); });
    });
}

std::string APPRPCServer::bringToFront(const IRPC::RPCSynchronousMethodObject& request)
{
    return answerDone(request);
}

std::string APPRPCServer::sendToBack(const IRPC::RPCSynchronousMethodObject& request)
{
    return answerDone(request);
}

std::string APPRPCServer::bringForward(const IRPC::RPCSynchronousMethodObject& request)
{
    return answerDone(request);
}

std::string APPRPCServer::sendBackward(const IRPC::RPCSynchronousMethodObject& request)
{
    return answerDone(request);
}

} // namespace Corvane
