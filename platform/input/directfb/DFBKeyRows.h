#pragma once

#include <cstdint>
#include <directfb_keyboard.h>
#include <span>

namespace Corvane
{

/// A key of Linux that DirectFB knows too.
struct DFBKeyRow {
    std::uint32_t code;
    DFBInputDeviceKeyIdentifier identifier; ///< DIKI_UNKNOWN for keys that no ordinary keyboard has
    DFBInputDeviceKeySymbol symbol;
};

/// @return every such key, in the order of the codes
std::span<const DFBKeyRow> getDFBKeyRows();

} // namespace Corvane
