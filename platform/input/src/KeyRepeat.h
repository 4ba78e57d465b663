#pragma once

#include <optional>

namespace Corvane
{

/// How a key repeats while it is held, in milliseconds; both 0 when it does not.
struct KeyRepeat {
    unsigned int delay;  ///< until the first repetition
    unsigned int period; ///< from one to the next
    bool operator==(const KeyRepeat&) const = default;
};

/// What the environment variable CORVANE_KEY_REPEAT asks for, as in "400,40", or "off". Nothing without it, and with
/// one debug line when it is something else: each device then repeats as the kernel lets it.
std::optional<KeyRepeat> readKeyRepeat();

} // namespace Corvane
