#pragma once

#include <cstdint>

namespace Corvane
{

/// Numeric result of an operation, carried by Exception. Any 32-bit value is allowed; `what()` names the first six.
enum ReturnCode : std::uint32_t {
    RETURN_SUCCESS = 0,
    RETURN_INVALID_PARAMETER = 1,
    RETURN_INVALID_STATE = 2,
    RETURN_OUT_OF_MEMORY = 3,
    RETURN_NOT_SUPPORTED = 4,
    RETURN_TIMED_OUT = 5,
    /// An operation that the operating system or the platform refused.
    /// Deliberate: outside the named texts, so it reads "Generic failure".
    RETURN_REFUSED_BY_SYSTEM = 7
};

} // namespace Corvane
