#pragma once

#include <corvane/foundation/SerialObject.h>
#include <string>

/// The payload objects of remote calls: JSON-RPC 2.0 messages.
namespace Corvane::IRPC
{

/// A call: an interface, a method of it, and the parameters as the text of a JSON object.
class CORVANE_EXPORT RPCMethodObject : public SerialObject
{
public:
    RPCMethodObject(std::string interface, std::string method, std::string parameters);

    const std::string& getInterface() const;
    const std::string& getMethod() const;
    /// @return the text of one JSON object, "{}" for a call without parameters
    const std::string& getParameters() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~RPCMethodObject() override;

private:
    std::string interface;
    std::string method;
    std::string parameters;
};

/// A call that nobody waits for: it is never answered, not even when it fails.
class CORVANE_EXPORT RPCAsynchronousMethodObject : public RPCMethodObject
{
public:
    using RPCMethodObject::RPCMethodObject;
    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    ~RPCAsynchronousMethodObject() override;
};

/// A call that expects a reply.
class CORVANE_EXPORT RPCSynchronousMethodObject : public RPCMethodObject
{
public:
    /// @param id  the caller's number or string for this call, as JSON text: it comes back in the reply as it is
    RPCSynchronousMethodObject(std::string interface, std::string method, std::string parameters, std::string id);

    const std::string& getId() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using RPCMethodObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~RPCSynchronousMethodObject() override;

private:
    std::string id;
};

/// Success without a value: `"result":null`.
class CORVANE_EXPORT RPCReturnObject : public SerialObject
{
public:
    explicit RPCReturnObject(const RPCSynchronousMethodObject& request);

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    std::string serialize() const override;
    void serialize(Serializer& serializer) const override;
    ~RPCReturnObject() override;

private:
    std::string id;
};

/// Success with a value. The value is written at construction, so it need not outlive the call.
class CORVANE_EXPORT RPCResultObject : public SerialObject
{
public:
    RPCResultObject(const RPCSynchronousMethodObject& request, const SerialObject& value);

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    std::string serialize() const override;
    void serialize(Serializer& serializer) const override;
    ~RPCResultObject() override;

private:
    std::string id;
    std::string value;
};

/// Failure: a JSON-RPC error code and a message for people.
class CORVANE_EXPORT RPCErrorObject : public SerialObject
{
public:
    /// The codes of JSON-RPC 2.0, section 5.1, and the one of a call that was delivered and failed.
    static constexpr int CALL_FAILED = -32000;
    static constexpr int INVALID_REQUEST = -32600;
    static constexpr int METHOD_NOT_FOUND = -32601;
    static constexpr int INVALID_PARAMETERS = -32602;
    static constexpr int PARSE_ERROR = -32700;

    RPCErrorObject(const RPCSynchronousMethodObject& request, const std::string& message, int code = CALL_FAILED);
    /// An answer to a text that could not be understood as a call.
    /// @param id  JSON text of the call's id, "null" where it has none
    RPCErrorObject(std::string id, const std::string& message, int code);

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~RPCErrorObject() override;

private:
    std::string id;
    std::string message;
    int code;
};

/// A change that is told to whoever subscribed to it.
class CORVANE_EXPORT RPCNotificationObject : public SerialObject
{
public:
    /// @param name     interface and operation: "IWindow::onOpacityChange"
    /// @param payload  the text of one JSON object
    RPCNotificationObject(std::string name, std::string payload);

    const std::string& getName() const;
    const std::string& getPayload() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~RPCNotificationObject() override;

private:
    std::string name;
    std::string payload;
};

} // namespace Corvane::IRPC
