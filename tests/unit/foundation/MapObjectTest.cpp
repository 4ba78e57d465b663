#include "ProblemOf.h"
#include "RecordingDeserializer.h"
#include <corvane/foundation/MapObject.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/value.h>
#include <map>
#include <string>
#include <vector>

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/writer.h>

namespace Corvane::Test
{

namespace
{

using IntegerMap = MapObject<int>;
using NestedMap = MapObject<MapObject<int>>;
using Calls = std::vector<std::string>;
using Integers = std::map<std::string, int>;

/// Its count says something else than its list of names.
class LyingDeserializer : public Deserializer
{
public:
    LyingDeserializer(const std::string& text, std::size_t count) : Deserializer(text), count(count) {}
    std::size_t getMemberCount() override { return count; }

private:
    std::size_t count;
};

template <class Map>
Map read(const std::string& text)
{
    Deserializer deserializer(text);
    return Map(deserializer);
}

} // namespace

TEST(MapObjectTest, ReadsEveryMemberOfAnObject)
{
    EXPECT_EQ(read<IntegerMap>(R"({"b":-2,"a":1})").getValues(), (Integers{{"a", 1}, {"b", -2}}));
    EXPECT_TRUE(read<IntegerMap>("{}").getValues().empty());
    EXPECT_TRUE(IntegerMap().getValues().empty());
}

TEST(MapObjectTest, ReadsMapsOneLevelDown)
{
    const NestedMap map = read<NestedMap>(R"({"volume":{"min":0,"max":50},"empty":{}})");

    ASSERT_EQ(map.getValues().size(), 2U);
    EXPECT_EQ(map.getValues().at("volume").getValues(), (Integers{{"max", 50}, {"min", 0}}));
    EXPECT_TRUE(map.getValues().at("empty").getValues().empty());
}

TEST(MapObjectTest, CallsTheOperationsOfTheDeserializerInOrder)
{
    RecordingDeserializer deserializer(R"({"b":1,"a":2})");
    const IntegerMap map(deserializer);

    EXPECT_EQ(deserializer.calls, (Calls{"names", "count", "begin 0", "end 0", "begin 1", "end 1"}));
}

TEST(MapObjectTest, ReadsBetweenTheTwoCallsOfAMember)
{
    RecordingDeserializer deserializer(R"({"a":1,"b":"no number","c":3})");

    EXPECT_EQ(problemOf([&] { IntegerMap map(deserializer); }), "b: expected a signed 32-bit number, found string");
    EXPECT_EQ(deserializer.calls, (Calls{"names", "count", "begin 0", "end 0", "begin 1"}));
}

TEST(MapObjectTest, WalksTheSameWayOneLevelDown)
{
    RecordingDeserializer deserializer(R"({"o":{"x":1},"p":{}})");
    const NestedMap map(deserializer);

    EXPECT_EQ(deserializer.calls,
              (Calls{"names", "count", "begin 0", "enter o", "names", "count", "begin 0", "end 0", "leave o", "end 0",
                     "begin 1", "enter p", "names", "count", "leave p", "end 1"}));
}

TEST(MapObjectTest, StopsAtTheCountWhenItIsTheSmallerBound)
{
    LyingDeserializer one(R"({"a":1,"b":2,"c":3})", 1);
    LyingDeserializer none(R"({"a":1})", 0);

    EXPECT_EQ(IntegerMap(one).getValues(), (Integers{{"a", 1}}));
    EXPECT_TRUE(IntegerMap(none).getValues().empty());
}

TEST(MapObjectTest, StopsAtTheEndOfTheListWhenItIsTheSmallerBound)
{
    LyingDeserializer four(R"({"a":1,"b":2})", 4);
    LyingDeserializer endless("{}", static_cast<std::size_t>(-1));

    EXPECT_EQ(IntegerMap(four).getValues(), (Integers{{"a", 1}, {"b", 2}}));
    EXPECT_TRUE(IntegerMap(endless).getValues().empty());
}

TEST(MapObjectTest, OverwritesAnEntryOfTheSameName)
{
    EXPECT_EQ(read<IntegerMap>(R"({"a":1,"b":5,"a":2,"a":3})").getValues(), (Integers{{"a", 3}, {"b", 5}}));
    EXPECT_EQ(read<NestedMap>(R"({"o":{"x":1},"o":{"y":2}})").getValues().at("o").getValues(), (Integers{{"y", 2}}));
}

TEST(MapObjectTest, NoticesAWrongValueEvenIfALaterOneOfThatNameIsRight)
{
    EXPECT_EQ(problemOf([] { read<IntegerMap>(R"({"a":"x","a":1})"); }),
              "a: expected a signed 32-bit number, found string");
}

TEST(MapObjectTest, SaysWhichMemberIsNoInteger)
{
    EXPECT_EQ(problemOf([] { read<NestedMap>(R"({"volume":{"max":1.5}})"); }),
              "volume.max: expected a signed 32-bit number, found 1.5");
    EXPECT_EQ(problemOf([] { read<NestedMap>(R"({"volume":7})"); }), "volume: expected an object, found 7");
    EXPECT_EQ(problemOf([] { read<IntegerMap>("[1]"); }), "expected an object, found array");
    EXPECT_EQ(problemOf([] { read<IntegerMap>(R"({"a":2147483648})"); }),
              "a: expected a signed 32-bit number, found 2147483648");
}

TEST(MapObjectTest, IsReadByKeyLikeAnyOtherValue)
{
    Deserializer deserializer(R"({"attributes":{"a":1},"after":2})");

    EXPECT_EQ(deserialize<IntegerMap>("attributes", deserializer).getValues(), (Integers{{"a", 1}}));
    EXPECT_EQ(deserialize<int>("after", deserializer), 2);
    EXPECT_EQ(problemOf([&] { deserialize<IntegerMap>("none", deserializer); }), "none: missing");
}

TEST(MapObjectTest, WritesItsEntriesSortedByName)
{
    IntegerMap map;
    map.getValues() = {{"b", -2}, {"a", 1}, {"\n", 0}};
    EXPECT_EQ(map.serialize(), R"({"\n":0,"a":1,"b":-2})");

    NestedMap nested;
    nested.getValues()["z"] = map;
    nested.getValues()["e"];
    EXPECT_EQ(nested.serialize(), R"({"e":{},"z":{"\n":0,"a":1,"b":-2}})");
    EXPECT_EQ(IntegerMap().serialize(), "{}");
}

TEST(MapObjectTest, WritesItselfAsAMember)
{
    IntegerMap map;
    map.getValues() = {{"a", 1}};
    Serializer serializer;
    serializer.beginObject("");
    map.serialize("attributes", serializer);
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"attributes":{"a":1}})");
}

TEST(MapObjectTest, WritesItsMembersWithoutBraces)
{
    IntegerMap map;
    map.getValues() = {{"a", 1}, {"b", 2}};
    Serializer serializer;
    serializer.beginObject("");
    map.serialize(serializer);
    serializer.endObject("");

    EXPECT_EQ(serializer.generate(), R"({"a":1,"b":2})");
}

TEST(MapObjectTest, ComesBackAsItWasWrittenWhateverTheNames)
{
    const std::string text = R"({"":{"":1,"a.b":2},"\"":{},"\u0000":{"x":-2147483648}})";

    const NestedMap map = read<NestedMap>(text);

    EXPECT_EQ(map.getValues().at("").getValues(), (Integers{{"", 1}, {"a.b", 2}}));
    EXPECT_EQ(read<NestedMap>(map.serialize()).serialize(), map.serialize());
    EXPECT_EQ(map.getValues().size(), 3U);
}

TEST(MapObjectTest, WritesItselfThroughAJsoncppWriter)
{
    NestedMap map;
    map.getValues()["a"].getValues() = {{"x", 1}, {"y", -2}};
    Json::FastWriter fast;
    EXPECT_EQ(map.serialize(fast), "{\"a\":{\"x\":1,\"y\":-2}}\n");

    Json::StyledWriter styled;
    Json::Value value;
    ASSERT_TRUE(Json::Reader().parse(map.serialize(styled), value));
    EXPECT_EQ(value["a"]["y"].asInt(), -2);
    EXPECT_NE(map.serialize(styled), map.serialize(fast)) << "the writer decides on the form";
}

TEST(MapObjectTest, CopiesItsEntries)
{
    IntegerMap original;
    original.getValues() = {{"a", 1}};
    IntegerMap copy(original);
    IntegerMap assigned;
    assigned.getValues() = {{"old", 9}};
    assigned = original;
    const auto cloned = original.clone();
    original.getValues()["a"] = 2;

    EXPECT_EQ(copy.getValues(), (Integers{{"a", 1}}));
    EXPECT_EQ(assigned.getValues(), (Integers{{"a", 1}}));
    EXPECT_EQ(cloned->serialize(), R"({"a":1})");
    EXPECT_NE(dynamic_cast<IntegerMap*>(cloned.get()), nullptr);
}

TEST(MapObjectTest, HasOneTypeNameForAllMaps)
{
    EXPECT_EQ(IntegerMap().getObjectType(), "MapObject");
    EXPECT_EQ(NestedMap().getObjectType(), "MapObject");
}

/// @return the text of a map of T that was read from `text`
template <class T>
std::string readAndWrite(const std::string& text)
{
    return read<MapObject<T>>(text).serialize();
}

TEST(MapObjectTest, CanBeMadeForEveryTypeThatIsReadAndWrittenByKey)
{
    for (const char* text : {R"({"outer":{"inner":{"x":1}}})", "{}"})
        EXPECT_EQ(readAndWrite<NestedMap>(text), text);
    EXPECT_EQ(readAndWrite<unsigned int>(R"({"a":4294967295,"b":0})"), R"({"a":4294967295,"b":0})");
    EXPECT_EQ(readAndWrite<bool>(R"({"a":true,"b":false})"), R"({"a":true,"b":false})");
    EXPECT_EQ(readAndWrite<std::string>(R"({"a":"text","b":""})"), R"({"a":"text","b":""})");
    const std::string rect = R"({"a":{"x":-1,"y":2,"width":3,"height":4}})";
    EXPECT_EQ(readAndWrite<ISurfaceCompositing::Rect>(rect), rect);
}

TEST(MapObjectTest, RefusesAValueThatIsOutOfTheRangeOfItsType)
{
    EXPECT_EQ(problemOf([] { read<MapObject<unsigned int>>(R"({"a":4294967296})"); }),
              "a: expected an unsigned 32-bit number, found 4294967296");
    EXPECT_EQ(problemOf([] { read<MapObject<bool>>(R"({"a":1})"); }), "a: expected true or false, found 1");
}

} // namespace Corvane::Test
