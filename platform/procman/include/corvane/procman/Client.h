#pragma once

#include <corvane/foundation/ComplexObject.h>
#include <corvane/foundation/Export.h>

namespace Corvane
{

/// A client of the process manager. `init()`, the first virtual operation, starts it.
class CORVANE_EXPORT Client : public ComplexObject
{
public:
    /// What kind of process the client belongs to. Only a window application is given windows.
    enum Type : unsigned int { TYPE_TOOL = 0, TYPE_APPLICATION = 1, TYPE_SERVICE = 2, TYPE_WINDOW = 3 };
};

} // namespace Corvane
