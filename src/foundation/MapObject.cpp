#include <corvane/foundation/MapObject.h>

namespace Corvane
{

MapBase::MapBase() = default;

MapBase::MapBase(Deserializer& /*deserializer*/) {}

std::string MapBase::getObjectType() const
{
    return "MapObject";
}

std::string MapBase::serialize() const
{
    return SerialObject::serialize();
}

std::string MapBase::serialize(Json::Writer& writer) const
{
    return SerialObject::serialize(writer);
}

void MapBase::serialize(const std::string& key, Serializer& serializer) const
{
    SerialObject::serialize(key, serializer);
}

MapBase::~MapBase() = default;

template class MapObject<int>;
template class MapObject<MapObject<int>>;

} // namespace Corvane
