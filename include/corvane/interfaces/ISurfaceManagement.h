#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialObject.h>
#include <corvane/interfaces/ISurfaceCompositing.h>

namespace Corvane
{

/// Creation of surfaces.
class CORVANE_EXPORT ISurfaceManagement
{
public:
    class CreationSettings;
    virtual ~ISurfaceManagement() = default;
};

/// What a surface starts with.
///
/// Five of the values travel and have getters; the others describe the surface's buffer to a compositor in the same
/// process and are not part of the serial form.
class CORVANE_EXPORT ISurfaceManagement::CreationSettings : public SerialObject
{
public:
    /// The settings of a window that asks for nothing: session 0, 1280 x 720 at the origin, at the back, opaque,
    /// visible.
    CreationSettings();
    /// @param opacity  0 to 255; kept as it is given
    CreationSettings(unsigned int sessionIndex, const ISurfaceCompositing::Rect& location, unsigned int zOrder,
                     unsigned int opacity, bool visibility);
    /// Reads the members "sessionIndex", "location", "zOrder", "opacity" and "visibility" of the deserializer's current
    /// object, each optional.
    explicit CreationSettings(Deserializer& deserializer);
    CreationSettings(const CreationSettings& other)
        : SerialObject(other),
          sessionIndex(other.sessionIndex),
          bufferSize(other.bufferSize),
          pixelFormat(other.pixelFormat),
          zOrder(other.zOrder),
          opacity(other.opacity),
          location(other.location),
          visibility(other.visibility),
          doubleBuffered(other.doubleBuffered),
          premultiplied(other.premultiplied)
    {
    }
    CreationSettings& operator=(const CreationSettings& other) = default;

    /// The display session, 0 to 2^32-1, whose input the window hears.
    unsigned int getSessionIndex() const;
    ISurfaceCompositing::Rect getLocation() const;
    unsigned int getZOrder() const;
    unsigned int getOpacity() const;
    bool getVisibility() const;

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~CreationSettings() override;

private:
    unsigned int sessionIndex;
    ISurfaceCompositing::Dimensions bufferSize;
    unsigned int pixelFormat;
    unsigned int zOrder;
    unsigned int opacity;
    ISurfaceCompositing::Rect location;
    bool visibility;
    bool doubleBuffered;
    bool premultiplied;
};

} // namespace Corvane
