#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

/// Root of everything that can be registered as a listener.
class CORVANE_EXPORT IListener
{
public:
    virtual ~IListener() = default;
};

} // namespace Corvane
