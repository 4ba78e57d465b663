#include <corvane/foundation/Deserializer.h>
#include <corvane/procman/IResourceAcquisition.h>
#include <gtest/gtest.h>

namespace Corvane::Test
{

using ResourceToken = IResourceAcquisition::ResourceToken;

TEST(ResourceToken, StartsAsNothingAskedFor)
{
    const ResourceToken token;

    EXPECT_EQ(token.getState(), 0U);
    EXPECT_EQ(token.getResourceIndex(), 0U);
}

TEST(ResourceToken, TravelsAsJson)
{
    const ResourceToken token(ResourceToken::STATE_GRANTED, 4294967295U);
    EXPECT_EQ(token.serialize(), R"({"state":3,"resourceIndex":4294967295})");

    Deserializer deserializer(token.serialize());
    const ResourceToken read(deserializer);
    EXPECT_EQ(read.getState(), 3U);
    EXPECT_EQ(read.getResourceIndex(), 4294967295U);
    EXPECT_EQ(read.clone()->serialize(), token.serialize());
    EXPECT_EQ(read.getObjectType(), "ResourceToken");
}

TEST(ResourceToken, NeedsBothMembers)
{
    for (const char* text : {"{}", R"({"state":3})", R"({"resourceIndex":3})", R"({"state":"3","resourceIndex":3})"}) {
        Deserializer deserializer(text);
        EXPECT_THROW(ResourceToken{deserializer}, SerialError) << text;
    }
}

} // namespace Corvane::Test
