#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane
{

/// @param name  a name of Linux's headers, as it stands there: "KEY_OK", "BTN_LEFT"
/// @return the code; nothing when there is no such key
/// Thread-safe.
CORVANE_EXPORT std::optional<IWindowEvent::KeyEvent::Code> findKeyCode(std::string_view name);

/// @return the name of the key in Linux's headers, "KEY_OK"; "" for a code without one
/// Thread-safe.
CORVANE_EXPORT std::string findKeyName(IWindowEvent::KeyEvent::Code code);

} // namespace Corvane
