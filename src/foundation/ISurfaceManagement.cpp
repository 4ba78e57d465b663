#include <corvane/interfaces/ISurfaceManagement.h>

#include "OptionalMember.h"

namespace Corvane
{

using CreationSettings = ISurfaceManagement::CreationSettings;
using Rect = ISurfaceCompositing::Rect;

CreationSettings::CreationSettings() : CreationSettings(0, Rect(0, 0, 1280, 720), 0, 255, true) {}

CreationSettings::CreationSettings(unsigned int sessionIndex, const Rect& location, unsigned int zOrder,
                                   unsigned int opacity, bool visibility)
    : sessionIndex(sessionIndex),
      bufferSize(location),
      pixelFormat(0),
      zOrder(zOrder),
      opacity(opacity),
      location(location),
      visibility(visibility),
      doubleBuffered(false),
      premultiplied(false)
{
}

CreationSettings::CreationSettings(Deserializer& deserializer) : CreationSettings()
{
    sessionIndex = deserializeOptional("sessionIndex", sessionIndex, deserializer);
    location = deserializeOptional("location", location, deserializer);
    bufferSize = location;
    zOrder = deserializeOptional("zOrder", zOrder, deserializer);
    opacity = deserializeOptional("opacity", opacity, deserializer);
    visibility = deserializeOptional("visibility", visibility, deserializer);
}

unsigned int CreationSettings::getSessionIndex() const
{
    return sessionIndex;
}

Rect CreationSettings::getLocation() const
{
    return location;
}

unsigned int CreationSettings::getZOrder() const
{
    return zOrder;
}

unsigned int CreationSettings::getOpacity() const
{
    return opacity;
}

bool CreationSettings::getVisibility() const
{
    return visibility;
}

std::string CreationSettings::getObjectType() const
{
    return "CreationSettings";
}

std::unique_ptr<SerialObject> CreationSettings::clone() const
{
    return std::make_unique<CreationSettings>(*this);
}

void CreationSettings::serialize(Serializer& serializer) const
{
    serializer.writeUnsigned("sessionIndex", sessionIndex);
    location.serialize("location", serializer);
    serializer.writeUnsigned("zOrder", zOrder);
    serializer.writeUnsigned("opacity", opacity);
    serializer.writeBoolean("visibility", visibility);
}

CreationSettings::~CreationSettings() = default;

} // namespace Corvane
