#include <corvane/foundation/SerialError.h>

namespace Corvane
{

SerialError::SerialError(const std::string& message) : std::runtime_error(message) {}

SerialError::~SerialError() = default;

} // namespace Corvane
