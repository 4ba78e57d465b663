#pragma once

#include <corvane/foundation/Export.h>
#include <stdexcept>
#include <string>

namespace Corvane
{

/// A remote call, a server or a client that failed; `what()` says what happened, for people.
class CORVANE_EXPORT RPCError : public std::runtime_error
{
public:
    enum class Reason {
        CALL_FAILED,   ///< the server answered with an error object; `what()` is its message
        TIMED_OUT,     ///< no answer within the deadline; the call may still be carried out
        NO_SERVER,     ///< nobody listens under that name
        DISCONNECTED,  ///< the connection ended before the answer came
        BAD_ANSWER,    ///< what came back is no JSON-RPC answer
        BAD_ADDRESS,   ///< a server name, a folder or a group that cannot be used
        SYSTEM_FAILURE ///< the operating system refused
    };

    /// @param code  JSON-RPC error code for CALL_FAILED, else a ReturnCode
    RPCError(Reason reason, int code, const std::string& message);
    RPCError(const RPCError&) = default;
    ~RPCError() override;

    Reason getReason() const;
    /// @return the error object's code for CALL_FAILED, 5 for TIMED_OUT, else 7
    int getCode() const;

private:
    Reason reason;
    int code;
};

} // namespace Corvane
