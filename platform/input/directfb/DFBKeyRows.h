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

/// @return the codes of the other keys; the first has the symbol DFB_CUSTOM_KEY(0), the next DFB_CUSTOM_KEY(1)
std::span<const std::uint16_t> getDFBCustomKeys();

} // namespace Corvane
