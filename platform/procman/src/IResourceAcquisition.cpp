#include <corvane/procman/IResourceAcquisition.h>

namespace Corvane
{

using ResourceToken = IResourceAcquisition::ResourceToken;

ResourceToken::ResourceToken(Deserializer& deserializer)
    : state(deserialize<unsigned int>("state", deserializer)),
      resourceIndex(deserialize<unsigned int>("resourceIndex", deserializer))
{
}

std::string ResourceToken::getObjectType() const
{
    return "ResourceToken";
}

std::unique_ptr<SerialObject> ResourceToken::clone() const
{
    return std::make_unique<ResourceToken>(*this);
}

void ResourceToken::serialize(Serializer& serializer) const
{
    serializer.writeUnsigned("state", state);
    serializer.writeUnsigned("resourceIndex", resourceIndex);
}

ResourceToken::~ResourceToken() = default;

} // namespace Corvane
