#include "KeyboardLayout.h"

#include <corvane/foundation/DebugPrint.h>

namespace Corvane
{

KeyboardLayout::Factory loadLayout(const std::string& description)
{
    corvaneDebugPrint(DEBUG_WARNING, "MultiInputDriver", "KeyboardLayout", __LINE__,
                      "CORVANE_KEYBOARD_LAYOUT is \"%s\", but this library was built without layouts: the US one "
                      "is used\n",
                      description.c_str());
    return nullptr;
}

} // namespace Corvane
