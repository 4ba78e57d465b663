#include "KeyboardLayout.h"

#include <cstdlib>

namespace Corvane
{

std::unique_ptr<Typing> KeyboardLayout::makeTyping()
{
    if (!factory) {
        const char* const description = std::getenv("CORVANE_KEYBOARD_LAYOUT");
        factory = description != nullptr && *description != '\0' ? loadLayout(description) : nullptr;
    }
    return *factory ? (*factory)() : nullptr;
}

} // namespace Corvane
