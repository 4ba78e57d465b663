#include "RPCAnswer.h"

#include "JsonText.h"

#include <corvane/common/RPCError.h>
#include <corvane/foundation/ReturnCode.h>
#include <corvane/foundation/SerialError.h>
#include <corvane/foundation/Serializer.h>

namespace Corvane
{

namespace
{

RPCError badAnswer(const std::string& problem)
{
    return {RPCError::Reason::BAD_ANSWER, RETURN_REFUSED_BY_SYSTEM,
            "the server's message cannot be understood: " + problem};
}

void readError(simdjson::dom::element value, RPCAnswer& answer)
{
    std::int64_t code = 0;
    std::string_view message;
    if (value["code"].get(code) != simdjson::SUCCESS || value["message"].get(message) != simdjson::SUCCESS)
        throw badAnswer("error without code and message");
    answer.errorCode = static_cast<int>(code);
    answer.errorMessage = message;
}

void readMember(std::string_view name, simdjson::dom::element value, std::string_view raw, RPCAnswer& answer)
{
    if (name == "id")
        answer.id = raw;
    else if (name == "result")
        answer.result = raw;
    else if (name == "error")
        readError(value, answer);
    else if (name == "params")
        answer.parameters = raw;
    else if (std::string_view method; name == "method" && value.get(method) == simdjson::SUCCESS) {
        answer.method = method;
        answer.isNotification = true;
    }
}

} // namespace

RPCAnswer::RPCAnswer(const std::string& message)
try {
    const JsonText text(message);
    text.forEachMember([this](std::string_view name, simdjson::dom::element value, std::string_view raw) {
        readMember(name, value, raw, *this);
    });
    // JSON-RPC lets it away where there are none; whoever is told gets an object all the same.
    if (isNotification && parameters.empty())
        parameters = "{}";
    if (!isNotification && (id.empty() || (result.empty() && !errorCode)))
        throw badAnswer("neither an answer nor a notification");
} catch (const SerialError& error) {
    throw badAnswer(error.what());
}

const std::string& RPCAnswer::getResult() const
{
    if (errorCode)
        throw RPCError(RPCError::Reason::CALL_FAILED, *errorCode, errorMessage);
    return result;
}

std::string callMessage(std::string_view id, const std::string& method, const std::string& parameters)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("jsonrpc", "2.0");
    serializer.writeJson("id", id);
    serializer.writeString("method", method);
    serializer.writeJson("params", parameters);
    serializer.endObject("");
    return serializer.generate();
}

std::string subscriptionParameters(const std::vector<std::string>& patterns)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.beginArray("notifications");
    for (const std::string& pattern : patterns)
        serializer.writeString("", pattern);
    serializer.endArray("notifications");
    serializer.endObject("");
    return serializer.generate();
}

} // namespace Corvane
