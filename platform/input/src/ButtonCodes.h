#pragma once

#include <linux/input-event-codes.h>

namespace Corvane
{

/// Whether a code of a key is one of the BTN_ codes, which lie in three ranges among the KEY_ codes.
constexpr bool isButton(unsigned int code)
{
    return (code >= BTN_MISC && code < KEY_OK) || (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT) ||
           (code >= BTN_TRIGGER_HAPPY && code <= BTN_TRIGGER_HAPPY40);
}

} // namespace Corvane
