#include <corvane/foundation/RPCObjects.h>

#include <string_view>
#include <utility>

namespace Corvane::IRPC
{

namespace
{

void writeVersion(Serializer& serializer)
{
    serializer.writeString("jsonrpc", "2.0");
}

void writeHead(const std::string& id, Serializer& serializer)
{
    writeVersion(serializer);
    serializer.writeJson("id", id);
}

/// @return the text of a reply, as its members would be written one after the other. Every call makes one: it is put
/// together at once, with room for the line feed that ends a message.
std::string composeReply(std::string_view id, std::string_view result)
{
    constexpr std::string_view BEFORE_ID = R"({"jsonrpc":"2.0","id":)";
    constexpr std::string_view BEFORE_RESULT = R"(,"result":)";
    constexpr std::string_view END = "}";
    std::string text;
    text.reserve(BEFORE_ID.size() + id.size() + BEFORE_RESULT.size() + result.size() + END.size() + 1);
    text.append(BEFORE_ID).append(id).append(BEFORE_RESULT).append(result).append(END);
    return text;
}

void writeCall(const RPCMethodObject& call, Serializer& serializer)
{
    const std::string& interface = call.getInterface();
    serializer.writeString("method", interface.empty() ? call.getMethod() : interface + "::" + call.getMethod());
    serializer.writeJson("params", call.getParameters());
}

} // namespace

RPCMethodObject::RPCMethodObject(std::string interface, std::string method, std::string parameters)
    : interface(std::move(interface)), method(std::move(method)), parameters(std::move(parameters))
{
}

const std::string& RPCMethodObject::getInterface() const
{
    return interface;
}

const std::string& RPCMethodObject::getMethod() const
{
    return method;
}

const std::string& RPCMethodObject::getParameters() const
{
    return parameters;
}

std::string RPCMethodObject::getObjectType() const
{
    return "RPCMethodObject";
}

std::unique_ptr<SerialObject> RPCMethodObject::clone() const
{
    return std::make_unique<RPCMethodObject>(*this);
}

void RPCMethodObject::serialize(Serializer& serializer) const
{
    writeVersion(serializer);
    writeCall(*this, serializer);
}

RPCMethodObject::~RPCMethodObject() = default;

std::string RPCAsynchronousMethodObject::getObjectType() const
{
    return "RPCAsynchronousMethodObject";
}

std::unique_ptr<SerialObject> RPCAsynchronousMethodObject::clone() const
{
    return std::make_unique<RPCAsynchronousMethodObject>(*this);
}

RPCAsynchronousMethodObject::~RPCAsynchronousMethodObject() = default;

RPCSynchronousMethodObject::RPCSynchronousMethodObject(std::string interface, std::string method,
                                                       std::string parameters, std::string id)
    : RPCMethodObject(std::move(interface), std::move(method), std::move(parameters)), id(std::move(id))
{
}

const std::string& RPCSynchronousMethodObject::getId() const
{
    return id;
}

std::string RPCSynchronousMethodObject::getObjectType() const
{
    return "RPCSynchronousMethodObject";
}

std::unique_ptr<SerialObject> RPCSynchronousMethodObject::clone() const
{
    return std::make_unique<RPCSynchronousMethodObject>(*this);
}

void RPCSynchronousMethodObject::serialize(Serializer& serializer) const
{
    writeHead(id, serializer);
    writeCall(*this, serializer);
}

RPCSynchronousMethodObject::~RPCSynchronousMethodObject() = default;

RPCReturnObject::RPCReturnObject(const RPCSynchronousMethodObject& request) : id(request.getId()) {}

std::string RPCReturnObject::getObjectType() const
{
    return "RPCReturnObject";
}

std::unique_ptr<SerialObject> RPCReturnObject::clone() const
{
    return std::make_unique<RPCReturnObject>(*this);
}

std::string RPCReturnObject::serialize() const
{
    return composeReply(id, "null");
}

void RPCReturnObject::serialize(Serializer& serializer) const
{
    writeHead(id, serializer);
    serializer.writeNull("result");
}

RPCReturnObject::~RPCReturnObject() = default;

RPCResultObject::RPCResultObject(const RPCSynchronousMethodObject& request, const SerialObject& value)
    : id(request.getId()), value(value.serialize())
{
}

std::string RPCResultObject::getObjectType() const
{
    return "RPCResultObject";
}

std::unique_ptr<SerialObject> RPCResultObject::clone() const
{
    return std::make_unique<RPCResultObject>(*this);
}

std::string RPCResultObject::serialize() const
{
    return composeReply(id, value);
}

void RPCResultObject::serialize(Serializer& serializer) const
{
    writeHead(id, serializer);
    serializer.writeJson("result", value);
}

RPCResultObject::~RPCResultObject() = default;

RPCErrorObject::RPCErrorObject(const RPCSynchronousMethodObject& request, const std::string& message, int code)
    : RPCErrorObject(request.getId(), message, code)
{
}

RPCErrorObject::RPCErrorObject(std::string id, const std::string& message, int code)
    : id(std::move(id)), message(message), code(code)
{
}

std::string RPCErrorObject::getObjectType() const
{
    return "RPCErrorObject";
}

std::unique_ptr<SerialObject> RPCErrorObject::clone() const
{
    return std::make_unique<RPCErrorObject>(*this);
}

void RPCErrorObject::serialize(Serializer& serializer) const
{
    writeHead(id, serializer);
    serializer.beginObject("error");
    serializer.writeInteger("code", code);
    serializer.writeString("message", message);
    serializer.endObject("error");
}

RPCErrorObject::~RPCErrorObject() = default;

RPCNotificationObject::RPCNotificationObject(std::string name, std::string payload)
    : name(std::move(name)), payload(std::move(payload))
{
}

const std::string& RPCNotificationObject::getName() const
{
    return name;
}

const std::string& RPCNotificationObject::getPayload() const
{
    return payload;
}

std::string RPCNotificationObject::getObjectType() const
{
    return "RPCNotificationObject";
}

std::unique_ptr<SerialObject> RPCNotificationObject::clone() const
{
    return std::make_unique<RPCNotificationObject>(*this);
}

void RPCNotificationObject::serialize(Serializer& serializer) const
{
    writeVersion(serializer);
    serializer.writeString("method", name);
    serializer.writeJson("params", payload);
}

RPCNotificationObject::~RPCNotificationObject() = default;

} // namespace Corvane::IRPC
