#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/ReturnCode.h>

namespace Corvane
{

/// The one exception of the runtime's own operations: a result code, thrown by value and caught by this type.
///
/// It stands alone on purpose: code that catches `std::exception` does not catch it. Immutable, so thread-safe.
///
///     try { application.setPriority(20); } catch (const Corvane::Exception& e) { puts(e.what()); }
class CORVANE_EXPORT Exception
{
public:
    Exception(ReturnCode const& code);
    Exception(Exception const& other);
    Exception& operator=(Exception const&) = delete;
    virtual ~Exception();

    virtual ReturnCode getCode() const;

    /// @return the text of the code, "Generic failure" for a code without one. Owned by the library, never null.
    virtual const char* what() const;

private:
    const ReturnCode code;
};

} // namespace Corvane
