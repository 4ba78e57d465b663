#include "RPCMessage.h"

#include "JsonText.h"

#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/SerialError.h>
#include <corvane/foundation/Serializer.h>
#include <optional>

namespace Corvane::RPCMessage
{

namespace
{

using IRPC::RPCErrorObject;

/// What is wrong with a call, as far as its own form goes.
struct Fault {
    int code;
    const char* message;
};

/// The members of a call that have been found so far, and the first fault among them.
struct Reading {
    Call call{.interface = {}, .method = {}, .parameters = "{}", .id = "null", .expectsReply = false};
    std::optional<Fault> fault;
    bool hasVersion = false;
    bool hasMethod = false;

    void fail(int code, const char* message)
    {
        if (!fault)
            fault = Fault{code, message};
    }
};

void readMethod(std::string_view name, Call& call)
{
    const auto separator = name.find("::");
    call.interface = separator == name.npos ? std::string_view() : name.substr(0, separator);
    call.method = separator == name.npos ? name : name.substr(separator + 2);
}

void readMember(std::string_view name, simdjson::dom::element value, std::string_view raw, Reading& reading)
{
    if (name == "jsonrpc") {
        std::string_view version;
        reading.hasVersion = value.get(version) == simdjson::SUCCESS && version == "2.0";
    } else if (name == "method") {
        std::string_view method;
        reading.hasMethod = value.get(method) == simdjson::SUCCESS;
        readMethod(method, reading.call);
    } else if (name == "params") {
        if (!value.is_object())
            reading.fail(RPCErrorObject::INVALID_PARAMETERS, "params: expected an object");
        reading.call.parameters = raw;
    } else if (name == "id") {
        if (!value.is_string() && !value.is_number() && !value.is_null())
            return reading.fail(RPCErrorObject::INVALID_REQUEST, "id: expected a number or a string");
        reading.call.id = raw;
        reading.call.expectsReply = true;
    }
}

std::string answerCall(const JsonText& text, const Dispatch& dispatch)
{
    Reading reading;
    text.forEachMember([&](std::string_view name, simdjson::dom::element value, std::string_view raw) {
        readMember(name, value, raw, reading);
    });
    if (!reading.hasVersion)
        reading.fault = Fault{RPCErrorObject::INVALID_REQUEST, "jsonrpc: expected \"2.0\""};
    else if (!reading.hasMethod)
        reading.fault = Fault{RPCErrorObject::INVALID_REQUEST, "method: expected a string"};
    // What is no call at all is answered even without an id; a call that wants no answer gets none, whatever happens.
    if (reading.fault && reading.fault->code == RPCErrorObject::INVALID_REQUEST)
        return errorReply(reading.call.id, reading.fault->code, reading.fault->message);
    std::string reply = reading.fault ? errorReply(reading.call.id, reading.fault->code, reading.fault->message)
                                      : dispatch(reading.call);
    return reading.call.expectsReply ? reply : std::string();
}

std::string answerElement(std::string_view element, const Dispatch& dispatch)
{
    const JsonText text(element);
    if (!text.root().is_object())
        return errorReply("null", RPCErrorObject::INVALID_REQUEST, "expected an object");
    return answerCall(text, dispatch);
}

std::string answerBatch(const JsonText& text, const Dispatch& dispatch)
{
    std::string replies;
    bool empty = true;
    text.forEachElement([&](simdjson::dom::element, std::string_view raw) {
        empty = false;
        const std::string reply = answerElement(raw, dispatch);
        if (reply.empty())
            return;
        replies += replies.empty() ? '[' : ',';
        replies += reply;
    });
    if (empty)
        return errorReply("null", RPCErrorObject::INVALID_REQUEST, "the batch is empty");
    if (!replies.empty())
        replies += ']';
    return replies;
}

} // namespace

std::string answer(std::string_view message, const Dispatch& dispatch)
{
    if (message.find_first_not_of(" \t\r\n") == message.npos)
        return {}; // a blank line between messages says nothing
    std::optional<JsonText> text;
    try {
        text.emplace(message);
    } catch (const NestingError&) {
        throw;
    } catch (const SerialError& error) {
        return errorReply("null", RPCErrorObject::PARSE_ERROR, error.what());
    }
    if (text->root().is_object())
        return answerCall(*text, dispatch);
    if (text->root().is_array())
        return answerBatch(*text, dispatch);
    return errorReply("null", RPCErrorObject::INVALID_REQUEST, "expected an object or an array");
}

std::string errorReply(const std::string& id, int code, const std::string& message)
{
    return RPCErrorObject(id, message, code).serialize();
}

std::string resultReply(const std::string& id, const std::string& result)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("jsonrpc", "2.0");
    serializer.writeJson("id", id);
    serializer.writeJson("result", result);
    serializer.endObject("");
    return serializer.generate();
}

std::vector<std::string> notificationPatterns(const std::string& parameters)
{
    std::vector<std::string> patterns;
    const JsonText text(parameters);
    simdjson::dom::array names;
    if (text.root()["notifications"].get(names) != simdjson::SUCCESS)
        throw SerialError("notifications: expected an array of strings");
    for (const simdjson::dom::element name : names) {
        std::string_view pattern;
        if (name.get(pattern) != simdjson::SUCCESS)
            throw SerialError("notifications: expected an array of strings");
        patterns.emplace_back(pattern);
    }
    return patterns;
}

} // namespace Corvane::RPCMessage
