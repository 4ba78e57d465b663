#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialObject.h>
#include <corvane/interfaces/ISurfaceManagement.h>
#include <string>

namespace Corvane
{

/// Acquisition of what a box has only so much of.
class CORVANE_EXPORT IResourceAcquisition
{
public:
    enum ResourceType : unsigned int { RESOURCE_TYPE_GRAPHICS_WINDOW = 1 };
    class ResourceToken;

    /// Asks for a resource of type RESOURCE_TYPE_GRAPHICS_WINDOW.
    /// @param uid       of the application that the window is for
    /// @param settings  what the window starts with
    /// @return a token in STATE_GRANTED, or in a state that tells why there is no window
    virtual ResourceToken getResource(const std::string& uid, const ISurfaceManagement::CreationSettings& settings) = 0;
    /// Gives a granted resource back.
    virtual void releaseResource(const ResourceToken& token) = 0;
    virtual ~IResourceAcquisition() = default;
};

/// What came of a request for a resource.
class CORVANE_EXPORT IResourceAcquisition::ResourceToken : public SerialObject
{
public:
    enum State : unsigned int {
        STATE_NONE = 0,      ///< nothing was asked for
        STATE_REFUSED = 1,   ///< the request was a bad one
        STATE_EXHAUSTED = 2, ///< there are no more resources of that kind
        STATE_GRANTED = 3    ///< the index names the resource
    };

    /// A token in STATE_NONE.
    ResourceToken() = default;
    ResourceToken(unsigned int state, unsigned int resourceIndex) : state(state), resourceIndex(resourceIndex) {}
    /// Reads the members "state" and "resourceIndex" of the deserializer's current object.
    explicit ResourceToken(Deserializer& deserializer);

    unsigned int getState() const { return state; }
    /// @return the index of the resource, 0 for a token that is not granted
    unsigned int getResourceIndex() const { return resourceIndex; }

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~ResourceToken() override;

private:
    unsigned int state = STATE_NONE;
    unsigned int resourceIndex = 0;
};

} // namespace Corvane
