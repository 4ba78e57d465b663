#include <array>
#include <climits>
#include <corvane/foundation/Serializer.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane::Test
{

namespace
{

std::string quoted(std::string_view value)
{
    Serializer serializer;
    serializer.writeString("", value);
    return serializer.generate();
}

} // namespace

TEST(SerializerTest, WritesMembersInTheOrderOfTheCalls)
{
    Serializer serializer;
    serializer.beginObject("");
    serialize("name", std::string("menu"), serializer);
    serialize("constant", "text", serializer);
    serialize("opacity", 255U, serializer);
    serialize("x", -12, serializer);
    serialize("visible", true, serializer);
    serialize("focused", false, serializer);
    serializer.writeNull("result");
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"name":"menu","constant":"text","opacity":255,"x":-12,"visible":true,)"
                                     R"("focused":false,"result":null})");
}

TEST(SerializerTest, IsEmptyBeforeTheFirstCall)
{
    const Serializer serializer;

    EXPECT_EQ(serializer.generate(), "");
}

TEST(SerializerTest, EnclosesObjectsAndArrays)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.beginObject("empty");
    serializer.endObject("empty");
    serializer.beginArray("list");
    serializer.writeUnsigned("", 1);
    serializer.beginObject("");
    serializer.writeBoolean("a", true);
    serializer.endObject("");
    serializer.beginArray("");
    serializer.endArray("");
    serializer.writeString("", "");
    serializer.endArray("list");
    serializer.writeInteger("last", 0);
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"empty":{},"list":[1,{"a":true},[],""],"last":0})");
}

TEST(SerializerTest, WritesTheEmptyKeyAsANameInsideAnObject)
{
    Serializer serializer;
    serializer.beginObject("");
    serialize("", 1, serializer);
    serializer.beginObject("");
    serialize("", 2, serializer);
    serializer.endObject("");
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"":1,"":{"":2}})");
}

TEST(SerializerTest, WritesASimpleValueAsAWholeText)
{
    Serializer serializer;
    serialize("", 17U, serializer);

    EXPECT_EQ(serializer.generate(), "17");
}

TEST(SerializerTest, WritesTheWholeRangeOfNumbers)
{
    Serializer serializer;
    serializer.beginArray("");
    for (const int value : {INT_MIN, -1, 0, INT_MAX})
        serializer.writeInteger("", value);
    for (const unsigned int value : {0U, 2147483648U, UINT_MAX})
        serializer.writeUnsigned("", value);
    serializer.endArray("");

    EXPECT_EQ(serializer.generate(), "[-2147483648,-1,0,2147483647,0,2147483648,4294967295]");
}

TEST(SerializerTest, WritesAJsonTextAsItIs)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeJson("id", "\"a b\"");
    serializer.writeJson("params", "{ \"x\" : 1 }");
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"id":"a b","params":{ "x" : 1 }})");
}

TEST(SerializerTest, SeparatesValuesWhateverTheirTextEndsWith)
{
    Serializer serializer;
    serializer.beginArray("");
    serializer.writeString("", "{");
    serializer.writeString("", "[");
    serializer.writeString("", ",");
    serializer.writeJson("", "{}");
    serializer.writeJson("", "[]");
    serializer.endArray("");

    EXPECT_EQ(serializer.generate(), R"(["{","[",",",{},[]])");
}

TEST(SerializerTest, EscapesWhatAStringMustNotContain)
{
    EXPECT_EQ(quoted("\"\\/\b\f\n\r\t"), R"("\"\\/\b\f\n\r\t")");
    EXPECT_EQ(quoted(std::string_view("\0\x01\x1f\x7f", 4)), "\"\\u0000\\u0001\\u001f\x7f\"");
}

TEST(SerializerTest, EscapesNamesLikeValues)
{
    Serializer serializer;
    serializer.beginObject("");
    serialize("a\"\n\xff", 1, serializer);
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), "{\"a\\\"\\n\xEF\xBF\xBD\":1}");
}

TEST(SerializerTest, KeepsCharactersOfEveryLength)
{
    EXPECT_EQ(
        quoted("a\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
        "\"a\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\"");
}

TEST(SerializerTest, ReplacesWhatIsNotUtf8)
{
    const std::string replaced = "\xEF\xBF\xBD";
    EXPECT_EQ(quoted("\x80"), '"' + replaced + '"');
    EXPECT_EQ(quoted("\xC0\xAF"), '"' + replaced + replaced + '"') << "an overlong form";
    EXPECT_EQ(quoted("\xE0\x9F\xBF"), '"' + replaced + replaced + replaced + '"') << "an overlong form";
    EXPECT_EQ(quoted("\xF0\x8F\xBF\xBF"), '"' + replaced + replaced + replaced + replaced + '"') << "an overlong form";
    EXPECT_EQ(quoted("\xED\xA0\x80"), '"' + replaced + replaced + replaced + '"') << "a surrogate";
    EXPECT_EQ(quoted("\xF4\x90\x80\x80"), '"' + replaced + replaced + replaced + replaced + '"') << "beyond U+10FFFF";
    EXPECT_EQ(quoted("\xF5"), '"' + replaced + '"');
    EXPECT_EQ(quoted("\xE2\x82"), '"' + replaced + '"') << "cut short at the end";
    EXPECT_EQ(quoted("\xF0\x9F\x98z"), '"' + replaced + "z\"") << "cut short before another character";
    EXPECT_EQ(quoted("\xE2\""), '"' + replaced + "\\\"\"") << "a quote must stay escaped";
}

TEST(SerializerTest, StartsAnewForEachSerializer)
{
    {
        Serializer serializer;
        serializer.beginObject("");
        serializer.writeString("left", "open");
    }
    Serializer serializer;
    serializer.writeString("", "new");

    EXPECT_EQ(serializer.generate(), "\"new\"");
}

TEST(SerializerTest, KeepsManySerializersApart)
{
    std::array<std::optional<Serializer>, 10> serializers;
    for (std::size_t i = 0; i < serializers.size(); ++i) {
        serializers[i].emplace();
        serializers[i]->writeUnsigned("", static_cast<unsigned int>(i));
    }
    for (std::size_t i = 0; i < serializers.size(); ++i)
        EXPECT_EQ(serializers[i]->generate(), std::to_string(i));
}

TEST(SerializerTest, WritesDeeplyNestedObjects)
{
    Serializer serializer;
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        serializer.beginObject("");
        expected += i == 0 ? "{" : "\"\":{";
    }
    for (int i = 0; i < 100; ++i)
        serializer.endObject("");

    EXPECT_EQ(serializer.generate(), expected + std::string(100, '}'));
}

} // namespace Corvane::Test
