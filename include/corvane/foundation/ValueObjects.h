#pragma once

#include <corvane/foundation/SerialObject.h>
#include <string>

namespace Corvane
{

/// A simple value that travels on its own, as the result of a call. T is std::string, unsigned int or bool.
template <class T>
class CORVANE_EXPORT ValueObject : public SerialObject
{
public:
    explicit ValueObject(const T& value) : value(value) {}

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override { return std::make_unique<ValueObject>(*this); }
    /// A simple value has no members: it is written whole, without a name.
    void serialize(Serializer& serializer) const override { Corvane::serialize(std::string(), value, serializer); }
    std::string serialize() const override
    {
        Serializer serializer;
        serialize(serializer);
        return serializer.generate();
    }
    using SerialObject::serialize;
    void serialize(const std::string& key, Serializer& serializer) const override
    {
        Corvane::serialize(key, value, serializer);
    }

    const T& getValue() const { return value; }

private:
    T value;
};

using StringObject = ValueObject<std::string>;
using UInt32Object = ValueObject<unsigned int>;
using BooleanObject = ValueObject<bool>;

extern template class ValueObject<std::string>;
extern template class ValueObject<unsigned int>;
extern template class ValueObject<bool>;

} // namespace Corvane
