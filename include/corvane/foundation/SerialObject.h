#pragma once

#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Export.h>
#include <corvane/foundation/Serializer.h>
#include <memory>
#include <string>

namespace Json
{
class Writer;
}

namespace Corvane
{

/// Base of every value that travels: it can be copied and written as JSON.
///
/// A derived class gives its type name, a copy of itself and its members; the other forms follow from these three.
/// Not synchronised.
class CORVANE_EXPORT SerialObject
{
public:
    /// The name of the value's type, the same on both ends of a connection.
    virtual std::string getObjectType() const = 0;
    virtual std::unique_ptr<SerialObject> clone() const = 0;

    /// Writes the members (of an object), without the braces.
    virtual void serialize(Serializer& serializer) const = 0;
    /// @return the whole value as a text of its own
    virtual std::string serialize() const;
    /// @return the whole value in the form that a jsoncpp writer gives it
    virtual std::string serialize(Json::Writer& writer) const;
    /// Writes the whole value as the member `key` of the object that is being written.
    virtual void serialize(const std::string& key, Serializer& serializer) const;

    virtual ~SerialObject();

protected:
    SerialObject() = default;
    SerialObject(const SerialObject&) = default;
    SerialObject& operator=(const SerialObject&) = default;
};

} // namespace Corvane
