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

/// How many bytes the answers to one batch may have before its remaining calls are not carried out. The last answer may
/// exceed it: a call that was carried out is answered.
constexpr std::size_t BATCH_ANSWER_LIMIT = 1024 * 1024;

/// One call as a client sent it: pieces of the message, which outlives it.
struct Call {
    std::string_view interface;  ///< "IWindow" of "IWindow::setOpacity", empty where the method has none
    std::string_view method;     ///< "setOpacity"
    std::string_view parameters; ///< JSON text without white space around it; "{}" for a call without parameters
    std::string_view id;         ///< JSON text, "null" for a call that expects no reply
    bool expectsReply;
};

/// Carries a call out. @return the text of its reply
using Dispatch = std::function<std::string(const Call&)>;

/// What a message is answered with.
struct Answer {
    std::string text;        ///< empty when no answer is due
    bool isCutShort = false; ///< the rest of a batch was not carried out, for its answers are too long
};

/// Answers one message: a call or a batch of calls. What is no call is answered with an error object.
/// @throws NestingError  the message is nested deeper than 64 levels
/// @throws std::bad_alloc, and what `dispatch` throws
Answer answer(std::string_view message, const Dispatch& dispatch);

/// @return the text of an error reply
std::string errorReply(std::string_view id, int code, const std::string& message);
/// @param result  JSON text
std::string resultReply(std::string_view id, std::string_view result);

/// Reads the member "notifications", an array of names, from the parameters of rpc.subscribe and rpc.unsubscribe.
/// @return the names, sorted, each once
/// @throws SerialError  it is missing or is something else
std::vector<std::string> notificationPatterns(std::string_view parameters);

} // namespace Corvane::RPCMessage
