#pragma once

#include <corvane/foundation/SerialObject.h>

namespace Corvane
{

/// Base of every event. Receivers tell kinds apart by the type name, never by the class alone.
class CORVANE_EXPORT Event : public SerialObject
{
public:
    /// @return the type name of the concrete event, one of the TYPE_NAME constants for the events of this library
    virtual std::string getTypeName() const = 0;

    /// An event's object type is its type name.
    std::string getObjectType() const override;
    ~Event() override;

protected:
    Event() = default;
    Event(const Event&) = default;
    Event& operator=(const Event&) = default;
};

} // namespace Corvane
