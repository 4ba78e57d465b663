#include <corvane/common/RPCServer.h>

#include "JsonText.h"
#include "RPCAddress.h"
#include "RPCMessage.h"
#include "RPCTransport.h"

#include <algorithm>
#include <corvane/foundation/Exception.h>
#include <mutex>
#include <utility>

namespace Corvane
{

using IRPC::RPCErrorObject;

namespace
{

/// @return the text of the error reply to the call whose exception is being handled
std::string failureReply(std::string_view id)
{
    try {
        throw;
    } catch (const Exception& exception) {
        return RPCMessage::errorReply(id, RPCErrorObject::CALL_FAILED, exception.what());
    } catch (const std::exception& exception) {
        return RPCMessage::errorReply(id, RPCErrorObject::CALL_FAILED, exception.what());
    } catch (...) {
        return RPCMessage::errorReply(id, RPCErrorObject::CALL_FAILED, "unknown");
    }
}

/// A method that takes no parameters does not look at them, so they may be anything. One that is not described may take
/// some.
bool takesParameters(const RPCMethodDescription* method)
{
    return method == nullptr || !method->parameters.empty();
}

} // namespace

RPCServer::RPCServer(const char* name)
    : name(name), listenersMutex("RPCServer::listenersMutex", 0), transport(std::make_unique<RPCTransport>(*this))
{
}

RPCServer::~RPCServer() = default;

void RPCServer::init()
{
    transport->open();
}

void RPCServer::shutdown()
{
    transport->close();
}

const std::string& RPCServer::getName() const
{
    return name;
}

void RPCServer::setConnectionLimit(unsigned int limit)
{
    connectionLimit = limit;
}

void RPCServer::waitForHandler()
{
    transport->waitForHandler();
}

void RPCServer::endCalls()
{
    transport->endCalls();
}

void RPCServer::setSubscriptionCheck(std::function<std::string()> check)
{
    transport->setSubscriptionCheck(std::move(check));
}

std::string RPCServer::getFixedRPCAddress() const
{
    return RPCAddress::socketPath(name);
}

std::string RPCServer::handleRPCSynchronousMethod(const IRPC::RPCSynchronousMethodObject& request)
{
    const auto table = interfaces.find(request.getInterface());
    if (table == interfaces.end())
        return RPCErrorObject(request, "unknown interface", RPCErrorObject::METHOD_NOT_FOUND).serialize();
    const auto entry = table->second.find(request.getMethod());
    if (entry == table->second.end())
        return RPCErrorObject(request, "unknown method", RPCErrorObject::METHOD_NOT_FOUND).serialize();
    // Handlers keep their exceptions to themselves; this is for those of a derived class that do not.
    try {
        return (this->*entry->second)(request);
    } catch (...) {
        return failureReply(request.getId());
    }
}

void RPCServer::handleRPCAsynchronousMethod(const IRPC::RPCAsynchronousMethodObject& request)
{
    handleRPCSynchronousMethod({request.getInterface(), request.getMethod(), request.getParameters(), "null"});
}

std::string RPCServer::handleRPCSynchronousMethodPayload(const std::string& payload)
{
    try {
        return RPCMessage::answer(payload, [this](const RPCMessage::Call& call) { return handleCall(call); }).text;
    } catch (const NestingError& error) {
        return RPCMessage::errorReply("null", RPCErrorObject::PARSE_ERROR, error.what());
    }
}

std::string RPCServer::handleCall(const RPCMessage::Call& call)
try {
    if (call.interface.empty()) {
        if (call.method == "rpc.discover")
            return RPCMessage::resultReply(call.id, discover());
        return RPCMessage::errorReply(call.id, RPCErrorObject::METHOD_NOT_FOUND, "unknown method");
    }
    const bool isObject = call.parameters.starts_with('{');
    if (!isObject && takesParameters(description.find(call.interface, call.method)))
        return RPCMessage::errorReply(call.id, RPCErrorObject::INVALID_PARAMETERS, "params: expected an object");
    std::string interface(call.interface);
    std::string method(call.method);
    std::string parameters(isObject ? call.parameters : "{}");
    if (call.expectsReply)
        return handleRPCSynchronousMethod(
            {std::move(interface), std::move(method), std::move(parameters), std::string(call.id)});
    handleRPCAsynchronousMethod({std::move(interface), std::move(method), std::move(parameters)});
    return {};
} catch (...) {
    // Not only handlers fail: memory may be short on the way to them, and a derived class may have a dispatch of its
    // own.
    return failureReply(call.id);
}

void RPCServer::handleRPCNotification(const IRPC::RPCNotificationObject& notification)
{
    handleRPCNotification(notification.getName(), notification.getPayload());
}

void RPCServer::handleRPCNotification(const std::string& notificationName, const std::string& payload)
{
    transport->notify(notificationName, payload);
    if (!hasListeners)
        return;
    std::vector<IRPC::IRPCListener*> told;
    {
        std::lock_guard guard(listenersMutex);
        told = listeners;
    }
    for (IRPC::IRPCListener* listener : told)
        listener->handleRPCNotification({notificationName, payload});
}

void RPCServer::addListener(IListener* listener)
{
    auto* rpcListener = dynamic_cast<IRPC::IRPCListener*>(listener);
    std::lock_guard guard(listenersMutex);
    if (rpcListener == nullptr || std::find(listeners.begin(), listeners.end(), rpcListener) != listeners.end())
        return;
    listeners.push_back(rpcListener);
    hasListeners = true;
}

void RPCServer::removeListener(IListener* listener)
{
    // Before the lock: the pointer may be a stale one, and a fault under the lock would keep it for ever.
    auto* rpcListener = dynamic_cast<IRPC::IRPCListener*>(listener);
    std::lock_guard guard(listenersMutex);
    std::erase(listeners, rpcListener);
    hasListeners = !listeners.empty();
}

} // namespace Corvane
