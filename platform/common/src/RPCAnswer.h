#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane
{

/// A message that a server has sent: the answer to a call, or a notification.
struct RPCAnswer {
    /// @throws RPCError  BAD_ANSWER: the message is neither
    explicit RPCAnswer(const std::string& message);

    /// @return the result of the call, as JSON text
    /// @throws RPCError  CALL_FAILED with the message of the error object
    const std::string& getResult() const;

    bool isNotification = false;
    std::string method;     ///< of a notification
    std::string parameters; ///< of a notification, as JSON text
    std::string id;         ///< of an answer, as JSON text; "null" when the server could not tell which call it was
    std::string result;
    std::optional<int> errorCode;
    std::string errorMessage;
};

/// @return the text of a call
std::string callMessage(std::string_view id, const std::string& method, const std::string& parameters);

/// @return the parameters of rpc.subscribe
std::string subscriptionParameters(const std::vector<std::string>& patterns);

} // namespace Corvane
