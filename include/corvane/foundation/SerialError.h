#pragma once

#include <corvane/foundation/Export.h>
#include <stdexcept>
#include <string>

namespace Corvane
{

/// A text that cannot be read as what it should be. `what()` names the key and what was wrong with its value:
/// "opacity: expected an unsigned 32-bit number, found string".
class CORVANE_EXPORT SerialError : public std::runtime_error
{
public:
    explicit SerialError(const std::string& message);
    SerialError(const SerialError&) = default;
    ~SerialError() override;
};

} // namespace Corvane
