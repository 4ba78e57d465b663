#include <corvane/foundation/ValueObjects.h>
#include <gtest/gtest.h>

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/writer.h>

namespace Corvane::Test
{

TEST(ValueObjects, AreWrittenAsTheValueAlone)
{
    EXPECT_EQ(StringObject(std::string("a\"b")).serialize(), "\"a\\\"b\"");
    EXPECT_EQ(UInt32Object(4294967295U).serialize(), "4294967295");
    EXPECT_EQ(BooleanObject(true).serialize(), "true");
    EXPECT_EQ(BooleanObject(false).serialize(), "false");
}

TEST(ValueObjects, AreWrittenAsMembers)
{
    Serializer serializer;
    serializer.beginObject("");
    StringObject(std::string("RUNNING")).serialize("state", serializer);
    UInt32Object(7).serialize("zOrder", serializer);
    BooleanObject(true).serialize("visible", serializer);
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"state":"RUNNING","zOrder":7,"visible":true})");
}

TEST(ValueObjects, KeepAndCopyTheirValue)
{
    const StringObject original(std::string("text"));
    const StringObject copy(original);
    UInt32Object number(1);
    number = UInt32Object(2);
    const auto cloned = BooleanObject(true).clone();

    EXPECT_EQ(copy.getValue(), "text");
    EXPECT_EQ(number.getValue(), 2U);
    EXPECT_EQ(cloned->serialize(), "true");
    EXPECT_NE(dynamic_cast<BooleanObject*>(cloned.get()), nullptr);
}

TEST(ValueObjects, NameTheirTypes)
{
    EXPECT_EQ(StringObject(std::string()).getObjectType(), "StringObject");
    EXPECT_EQ(UInt32Object(0).getObjectType(), "UInt32Object");
    EXPECT_EQ(BooleanObject(false).getObjectType(), "BooleanObject");
}

TEST(ValueObjects, AreWrittenThroughAJsoncppWriter)
{
    Json::FastWriter writer;

    EXPECT_EQ(StringObject(std::string("a")).serialize(writer), "\"a\"\n");
    EXPECT_EQ(UInt32Object(4294967295U).serialize(writer), "4294967295\n");
    EXPECT_EQ(BooleanObject(true).serialize(writer), "true\n");
}

} // namespace Corvane::Test
