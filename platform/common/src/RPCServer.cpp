#include <corvane/common/RPCServer.h>

#include "JsonText.h"
#include "RPCAddress.h"
#include "RPCMessage.h"
#include "RPCTransport.h"

#include <algorithm>
#include <corvane/foundation/Exception.h>
#include <mutex>

namespace Corvane
{

using IRPC::RPCErrorObject;

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
    } catch (const Exception& exception) {
        return RPCErrorObject(request, exception.what()).serialize();
    } catch (const std::exception& exception) {
        return RPCErrorObject(request, exception.what()).serialize();
    } catch (...) {
        return RPCErrorObject(request, "unknown").serialize();
    }
}

void RPCServer::handleRPCAsynchronousMethod(const IRPC::RPCAsynchronousMethodObject& request)
{
    handleRPCSynchronousMethod({request.getInterface(), request.getMethod(), request.getParameters(), "null"});
}

std::string RPCServer::handleRPCSynchronousMethodPayload(const std::string& payload)
{
    try {
        return RPCMessage::answer(payload, [this](const RPCMessage::Call& call) { return handleCall(call); });
    } catch (const NestingError& error) {
        return RPCMessage::errorReply("null", RPCErrorObject::PARSE_ERROR, error.what());
    }
}

std::string RPCServer::handleCall(const RPCMessage::Call& call)
{
    if (call.interface.empty()) {
        if (call.method == "rpc.discover")
            return RPCMessage::resultReply(call.id, discover());
        return RPCMessage::errorReply(call.id, RPCErrorObject::METHOD_NOT_FOUND, "unknown method");
    }
    if (call.expectsReply)
        return handleRPCSynchronousMethod({call.interface, call.method, call.parameters, call.id});
    handleRPCAsynchronousMethod({call.interface, call.method, call.parameters});
    return {};
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
    std::lock_guard guard(listenersMutex);
    std::erase(listeners, dynamic_cast<IRPC::IRPCListener*>(listener));
    hasListeners = !listeners.empty();
}

} // namespace Corvane
