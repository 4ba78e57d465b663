#pragma once

#include <corvane/foundation/SerialObject.h>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace Corvane
{

/// What all maps of names to values have in common.
class CORVANE_EXPORT MapBase : public SerialObject
{
public:
    MapBase();
    /// Takes nothing from the deserializer itself: the derived map reads its members.
    explicit MapBase(Deserializer& deserializer);

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override = 0;
    void serialize(Serializer& serializer) const override = 0;
    std::string serialize() const override;
    std::string serialize(Json::Writer& writer) const override;
    void serialize(const std::string& key, Serializer& serializer) const override;
    ~MapBase() override;

protected:
    MapBase(const MapBase&) = default;
    MapBase& operator=(const MapBase&) = default;
};

/// A map of names to integers (`MapObject<int>`) or to such maps (`MapObject<MapObject<int>>`); others may be made, of
/// `std::string`, `unsigned int`, `bool` or a SerialObject that is constructed from a Deserializer.
///
///     Deserializer deserializer("{\"volume\":{\"max\":50}}");
///     MapObject<MapObject<int>> attributes(deserializer);
template <class T>
class CORVANE_EXPORT MapObject : public MapBase
{
public:
    MapObject() = default;
    /// Reads every member of the deserializer's current object.
    /// @throws SerialError  a member is not a T
    explicit MapObject(Deserializer& deserializer) : MapBase(deserializer) { initMap(deserializer); }
    MapObject(const MapObject&) = default;
    MapObject& operator=(const MapObject&) = default;
    ~MapObject() override = default;

    using MapBase::serialize;
    std::unique_ptr<SerialObject> clone() const override { return std::make_unique<MapObject>(*this); }
    void serialize(Serializer& serializer) const override
    {
        for (const auto& [name, value] : values) {
            if constexpr (std::is_base_of_v<SerialObject, T>)
                static_cast<const SerialObject&>(value).serialize(name, serializer);
            else
                Corvane::serialize(name, value, serializer);
        }
    }

    /// The entries, sorted by name; to be read and changed freely.
    std::map<std::string, T>& getValues() { return values; }
    const std::map<std::string, T>& getValues() const { return values; }

private:
    // Another type would be converted to one of these on its way out, and come back as another value.
    static_assert(std::is_base_of_v<SerialObject, T> || std::is_same_v<T, std::string> ||
                      std::is_same_v<T, unsigned int> || std::is_same_v<T, int> || std::is_same_v<T, bool>,
                  "a map holds texts, 32-bit integers, booleans or serial objects");

    void initMap(Deserializer& deserializer)
    {
        const std::vector<std::string> names = deserializer.getMemberNames();
        const std::size_t count = deserializer.getMemberCount();
        // Deliberate: both bounds hold, so that a count that disagrees with the list never reads past either.
        for (std::size_t i = 0; i < count && i < names.size(); ++i) {
            deserializer.beginMember(i);
            values.insert_or_assign(names[i], deserialize<T>(names[i], deserializer));
            deserializer.endMember(i);
        }
    }

    std::map<std::string, T> values;
};

extern template class MapObject<int>;
extern template class MapObject<MapObject<int>>;

} // namespace Corvane
