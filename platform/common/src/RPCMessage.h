#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// What clients send, in the form of JSON-RPC 2.0.
namespace Corvane::RPCMessage
{

/// The longest message in bytes.
constexpr std::size_t SIZE_LIMIT = 1024 * 1024;

/// One call as a client sent it.
struct Call {
    std::string interface;  ///< "IWindow" of "IWindow::setOpacity", empty where the method has none
    std::string method;     ///< "setOpacity"
    std::string parameters; ///< text of a JSON object
    std::string id;         ///< JSON text, "null" for a call that expects no reply
    bool expectsReply;
};

/// Carries a call out. @return the text of its reply
using Dispatch = std::function<std::string(const Call&)>;

/// Answers one message: a call or a batch of calls.
/// @return the text of the answer, empty when none is due. What is no call is answered with an error object.
/// @throws NestingError  the message is nested deeper than 64 levels
std::string answer(std::string_view message, const Dispatch& dispatch);

/// @return the text of an error reply
std::string errorReply(const std::string& id, int code, const std::string& message);
/// @param result  JSON text
std::string resultReply(const std::string& id, const std::string& result);

/// Reads the member "notifications", an array of names, from the parameters of rpc.subscribe and rpc.unsubscribe.
/// @throws SerialError  it is missing or is something else
std::vector<std::string> notificationPatterns(const std::string& parameters);

} // namespace Corvane::RPCMessage
