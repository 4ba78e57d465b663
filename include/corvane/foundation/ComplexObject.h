#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

/// An object that becomes usable in two steps: construction, then `init()`, which may fail and may call virtual
/// operations.
class CORVANE_EXPORT ComplexObject
{
public:
    /// Does nothing here. A derived class calls its base's `init()` first. Failure is an exception.
    virtual void init();
    virtual ~ComplexObject();

protected:
    ComplexObject() = default;
    ComplexObject(const ComplexObject&) = default;
    ComplexObject& operator=(const ComplexObject&) = default;
};

} // namespace Corvane
