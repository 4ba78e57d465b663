#include <corvane/common/RPCError.h>

namespace Corvane
{

RPCError::RPCError(Reason reason, int code, const std::string& message)
    : std::runtime_error(message), reason(reason), code(code)
{
}

RPCError::~RPCError() = default;

RPCError::Reason RPCError::getReason() const
{
    return reason;
}

int RPCError::getCode() const
{
    return code;
}

} // namespace Corvane
