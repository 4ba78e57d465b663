#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IListener.h>

namespace Corvane
{

/// Something that tells listeners what happens to it.
class CORVANE_EXPORT IObservable
{
public:
    /// Registers a listener at the end of the list. Null, a listener of a kind that is not told here, and one that is
    /// registered already are refused silently. The listener is not owned and must be removed before it is destroyed.
    virtual void addListener(IListener* listener) = 0;
    /// Takes a listener off the list; one that is not on it is ignored.
    virtual void removeListener(IListener* listener) = 0;
    virtual ~IObservable() = default;
};

} // namespace Corvane
