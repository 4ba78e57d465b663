#include "RPCMessage.h"

#include "JsonScanner.h"
#include "JsonText.h"

#include <algorithm>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/SerialError.h>
#include <corvane/foundation/Serializer.h>
#include <optional>

namespace Corvane::RPCMessage
{

namespace
{

using IRPC::RPCErrorObject;

constexpr std::string_view WHITE_SPACE = " \t\r\n";

/// What the members of a call say; of several members of one name the last one counts, so each is noted anew.
struct Reading {
    Call call{.interface = {}, .method = {}, .parameters = "{}", .id = "null", .expectsReply = false};
    bool hasVersion = false;
    bool hasMethod = false;
    bool hasBadId = false;
};

void readMethod(std::string_view name, Call& call)
{
    const auto separator = name.find("::");
    const bool hasInterface = separator != name.npos && separator > 0;
    call.interface = hasInterface ? name.substr(0, separator) : std::string_view();
    call.method = hasInterface ? name.substr(separator + 2) : name;
}

bool isId(simdjson::dom::element value)
{
    return value.is_string() || value.is_number() || value.is_null();
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
        reading.call.parameters = raw;
    } else if (name == "id") {
        reading.hasBadId = !isId(value);
        reading.call.id = reading.hasBadId ? "null" : raw;
        reading.call.expectsReply = true;
    }
}

/// @return why this is no call; null when it is one
const char* findFault(const Reading& reading)
{
    if (!reading.hasVersion)
        return "jsonrpc: expected \"2.0\"";
    if (!reading.hasMethod)
        return "method: expected a string";
    if (reading.hasBadId)
        return "id: expected a number or a string";
    return nullptr;
}

std::string answerCall(const JsonText& text, const Dispatch& dispatch)
{
    Reading reading;
    text.forEachMember([&](std::string_view name, simdjson::dom::element value, std::string_view raw) {
        readMember(name, value, raw, reading);
    });
    // What is no call at all is answered even without an id; a call that wants no answer gets none, whatever happens.
    if (const char* const fault = findFault(reading))
        return errorReply(reading.call.id, RPCErrorObject::INVALID_REQUEST, fault);
    std::string reply = dispatch(reading.call);
    if (!reading.call.expectsReply)
        reply.clear();
    return reply;
}

std::string answerElement(std::string_view element, const Dispatch& dispatch)
{
    const JsonText text(element);
    if (!text.root().is_object())
        return errorReply("null", RPCErrorObject::INVALID_REQUEST, "expected an object");
    return answerCall(text, dispatch);
}

Answer answerBatch(const JsonText& text, const Dispatch& dispatch)
{
    Answer answer;
    const auto append = [&replies = answer.text](const std::string& reply) {
        if (reply.empty())
            return;
        replies += replies.empty() ? '[' : ',';
        replies += reply;
    };
    bool empty = true;
    text.forEachElement([&](simdjson::dom::element, std::string_view raw) {
        empty = false;
        answer.isCutShort = answer.isCutShort || answer.text.size() > BATCH_ANSWER_LIMIT;
        if (!answer.isCutShort)
            append(answerElement(raw, dispatch));
    });
    if (empty)
        return {.text = errorReply("null", RPCErrorObject::INVALID_REQUEST, "the batch is empty")};
    if (answer.isCutShort)
        append(errorReply("null", RPCErrorObject::CALL_FAILED, "the answers are too long"));
    if (!answer.text.empty())
        answer.text += ']';
    return answer;
}

bool isInteger(std::string_view text)
{
    if (text.starts_with('-'))
        text.remove_prefix(1);
    const bool hasLeadingZero = text.size() > 1 && text.front() == '0';
    return !text.empty() && !hasLeadingZero && text.find_first_not_of("0123456789") == text.npos;
}

bool isId(std::string_view raw)
try {
    // An integer needs not be representable to be given back as it was written.
    return isInteger(raw) || isId(JsonText(raw).root());
} catch (const SerialError&) {
    return false;
}

/// @return the id of a call that cannot be read for a number in it; "null" where it has none that can be given back
std::string_view findId(std::string_view message)
{
    message.remove_prefix(std::min(message.find_first_not_of(WHITE_SPACE), message.size()));
    if (!message.starts_with('{'))
        return "null";
    JsonScanner scanner(message);
    scanner.enter();
    std::string_view id = "null";
    for (auto name = scanner.next(); name.starts_with('"'); name = scanner.next()) {
        const std::string_view value = scanner.next();
        if (name == R"("id")")
            id = value;
    }
    return isId(id) ? id : "null";
}

} // namespace

Answer answer(std::string_view message, const Dispatch& dispatch)
{
    if (message.find_first_not_of(WHITE_SPACE) == message.npos)
        return {}; // a blank line between messages says nothing
    std::optional<JsonText> text;
    try {
        text.emplace(message);
    } catch (const NestingError&) {
        throw;
    } catch (const NumberError& error) {
        return {.text = errorReply(findId(message), RPCErrorObject::PARSE_ERROR, error.what())};
    } catch (const SerialError& error) {
        return {.text = errorReply("null", RPCErrorObject::PARSE_ERROR, error.what())};
    }
    if (text->root().is_object())
        return {.text = answerCall(*text, dispatch)};
    if (text->root().is_array())
        return answerBatch(*text, dispatch);
    return {.text = errorReply("null", RPCErrorObject::INVALID_REQUEST, "expected an object or an array")};
}

std::string errorReply(std::string_view id, int code, const std::string& message)
{
    return RPCErrorObject(std::string(id), message, code).serialize();
}

std::string resultReply(std::string_view id, std::string_view result)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("jsonrpc", "2.0");
    serializer.writeJson("id", id);
    serializer.writeJson("result", result);
    serializer.endObject("");
    return serializer.generate();
}

std::vector<std::string> notificationPatterns(std::string_view parameters)
{
    const JsonText text(parameters);
    std::optional<simdjson::dom::element> member;
    text.forEachMember([&member](std::string_view name, simdjson::dom::element value, std::string_view) {
        if (name == "notifications")
            member = value;
    });
    simdjson::dom::array names;
    if (!member || member->get(names) != simdjson::SUCCESS)
        throw SerialError("notifications: expected an array of strings");
    std::vector<std::string> patterns;
    for (const simdjson::dom::element name : names) {
        std::string_view pattern;
        if (name.get(pattern) != simdjson::SUCCESS)
            throw SerialError("notifications: expected an array of strings");
        patterns.emplace_back(pattern);
    }
    std::sort(patterns.begin(), patterns.end());
    patterns.erase(std::unique(patterns.begin(), patterns.end()), patterns.end());
    return patterns;
}

} // namespace Corvane::RPCMessage
