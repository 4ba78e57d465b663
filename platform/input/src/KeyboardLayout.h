#pragma once

#include "Typing.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Corvane
{

/// The layout of all keyboards, as CORVANE_KEYBOARD_LAYOUT says. It is loaded when the first keyboard asks for it, and
/// never where the variable is not set. Not synchronised.
class KeyboardLayout
{
public:
    using Factory = std::function<std::unique_ptr<Typing>()>;

    /// @return null when the layout is the US one, which needs no library
    std::unique_ptr<Typing> makeTyping();

private:
    std::optional<Factory> factory; ///< nothing before the first keyboard
};

/// @param description  LAYOUT[,VARIANT[,OPTION...]] in the words of XKB, "de,nodeadkeys"; "us+ru" are two layouts
/// @return null when the layout cannot be had, which is one debug line
KeyboardLayout::Factory loadLayout(const std::string& description);

} // namespace Corvane
