#include "ProblemOf.h"
#include <climits>
#include <corvane/foundation/Deserializer.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Names = std::vector<std::string>;

/// Two numbers, as a type of its own that travels.
struct Pair {
    explicit Pair(Deserializer& deserializer)
        : first(deserialize<int>("first", deserializer)), second(deserialize<int>("second", deserializer))
    {
    }
    int first;
    int second;
};

} // namespace

TEST(DeserializerTest, ReadsEachSimpleTypeByKey)
{
    Deserializer deserializer(R"( { "name" : "menu", "opacity":255, "x":-12, "visible":true, "focused" : false } )");

    EXPECT_EQ(deserialize<std::string>("name", deserializer), "menu");
    EXPECT_EQ(deserialize<unsigned int>("opacity", deserializer), 255U);
    EXPECT_EQ(deserialize<int>("x", deserializer), -12);
    EXPECT_TRUE(deserialize<bool>("visible", deserializer));
    EXPECT_FALSE(deserialize<bool>("focused", deserializer));
}

TEST(DeserializerTest, ReadsTheWholeRangeOfNumbers)
{
    Deserializer deserializer(
        R"({"low":-2147483648,"high":2147483647,"zero":0,"minusZero":-0,"most":4294967295,"above":2147483648})");

    EXPECT_EQ(deserialize<int>("low", deserializer), INT_MIN);
    EXPECT_EQ(deserialize<int>("high", deserializer), INT_MAX);
    EXPECT_EQ(deserialize<unsigned int>("zero", deserializer), 0U);
    EXPECT_EQ(deserialize<unsigned int>("minusZero", deserializer), 0U);
    EXPECT_EQ(deserialize<unsigned int>("most", deserializer), UINT_MAX);
    EXPECT_EQ(deserialize<unsigned int>("above", deserializer), 2147483648U);
}

TEST(DeserializerTest, DecodesStringsAndNames)
{
    Deserializer deserializer(R"({"\u006eame":"a\"\\\/\b\f\n\r\t\u00e9\ud83d\ude00\u0000z"})");

    EXPECT_EQ(deserialize<std::string>("name", deserializer),
              std::string("a\"\\/\b\f\n\r\t\xC3\xA9\xF0\x9F\x98\x80\0z", 17));
}

TEST(DeserializerTest, EntersAndLeavesMembers)
{
    Deserializer deserializer(R"({"outer":{"inner":{"x":1},"x":2},"x":3})");

    deserializer.enterMember("outer");
    deserializer.enterMember("inner");
    EXPECT_EQ(deserializer.readInteger("x"), 1);
    deserializer.leaveMember("inner");
    EXPECT_EQ(deserializer.readInteger("x"), 2);
    deserializer.leaveMember("outer");
    EXPECT_EQ(deserializer.readInteger("x"), 3);
}

TEST(DeserializerTest, StaysWhereItIsWithAnEmptyKey)
{
    Deserializer deserializer(R"({"x":3})");

    deserializer.enterMember("");
    EXPECT_EQ(deserializer.readInteger("x"), 3);
    deserializer.leaveMember("");
    EXPECT_EQ(deserializer.readInteger("x"), 3);
}

TEST(DeserializerTest, StaysInTheTextsOwnObjectWhenThereIsNothingToLeave)
{
    Deserializer deserializer(R"({"x":3})");

    deserializer.leaveMember("nothing");

    EXPECT_EQ(deserializer.readInteger("x"), 3);
}

TEST(DeserializerTest, ReadsATypeOfItsOwnFromItsMember)
{
    Deserializer deserializer(R"({"pair":{"first":1,"second":2},"first":9})");

    const Pair pair = deserialize<Pair>("pair", deserializer);

    EXPECT_EQ(pair.first, 1);
    EXPECT_EQ(pair.second, 2);
    EXPECT_EQ(deserialize<int>("first", deserializer), 9) << "the member was not left";
}

TEST(DeserializerTest, ListsTheMembersInTheOrderOfTheText)
{
    Deserializer deserializer(R"({"b":1,"a":2,"b":3,"":{}})");

    EXPECT_EQ(deserializer.getMemberNames(), (Names{"b", "a", "b", ""}));
    EXPECT_EQ(deserializer.getMemberCount(), 4U);
}

TEST(DeserializerTest, ListsNothingInAnEmptyObject)
{
    Deserializer deserializer("{}");

    EXPECT_EQ(deserializer.getMemberNames(), Names{});
    EXPECT_EQ(deserializer.getMemberCount(), 0U);
    EXPECT_FALSE(deserializer.hasMember("a"));
}

TEST(DeserializerTest, KnowsWhichMembersThereAre)
{
    Deserializer deserializer(R"({"a":null,"o":{"b":1}})");

    EXPECT_TRUE(deserializer.hasMember("a"));
    EXPECT_FALSE(deserializer.hasMember("b"));
    deserializer.enterMember("o");
    EXPECT_TRUE(deserializer.hasMember("b"));
    EXPECT_FALSE(deserializer.hasMember("a"));
}

TEST(DeserializerTest, TakesTheLastOfSeveralMembersOfOneName)
{
    Deserializer deserializer(R"({"x":1,"o":{"y":1},"x":"two","o":{"y":2},"x":3})");

    EXPECT_EQ(deserializer.readInteger("x"), 3);
    deserializer.enterMember("o");
    EXPECT_EQ(deserializer.readInteger("y"), 2);
}

TEST(DeserializerTest, MeansThatVeryMemberBetweenBeginAndEnd)
{
    Deserializer deserializer(R"({"x":1,"y":5,"x":2,"x":3})");

    deserializer.beginMember(0);
    EXPECT_EQ(deserializer.readInteger("x"), 1);
    EXPECT_EQ(deserializer.readInteger("y"), 5) << "another name is read as ever";
    deserializer.endMember(0);
    EXPECT_EQ(deserializer.readInteger("x"), 3);
    deserializer.beginMember(2);
    EXPECT_EQ(deserializer.readInteger("x"), 2);
    deserializer.endMember(2);
    deserializer.beginMember(0);
    EXPECT_EQ(deserializer.readInteger("x"), 1) << "going back";
}

TEST(DeserializerTest, EntersThatVeryMemberBetweenBeginAndEnd)
{
    Deserializer deserializer(R"({"":{"x":1},"":{"x":2}})");

    deserializer.beginMember(0);
    deserializer.enterMember("");
    EXPECT_EQ(deserializer.readInteger("x"), 1);
    deserializer.leaveMember("");
    deserializer.endMember(0);
    deserializer.beginMember(1);
    deserializer.enterMember("");
    EXPECT_EQ(deserializer.readInteger("x"), 2);
}

TEST(DeserializerTest, RefusesAMemberNumberThatThereIsNot)
{
    Deserializer deserializer(R"({"o":{"x":1}})");

    EXPECT_EQ(problemOf([&] { deserializer.beginMember(1); }), "has no member number 1");
    deserializer.enterMember("o");
    EXPECT_EQ(problemOf([&] { deserializer.beginMember(7); }), "o: has no member number 7");
}

TEST(DeserializerTest, ReadsManyMembersInOnePass)
{
    constexpr std::size_t COUNT = 50000;
    std::string text = "{\"first\":0";
    for (std::size_t i = 1; i < COUNT; ++i)
        text += ",\"k\":" + std::to_string(i);
    Deserializer deserializer(text + "}");

    // One search for each member would take minutes.
    for (std::size_t i = 1; i < COUNT; ++i) {
        deserializer.beginMember(i);
        ASSERT_EQ(deserializer.readUnsigned("k"), i);
        deserializer.endMember(i);
    }
}

TEST(DeserializerTest, KeepsSeveralTextsApart)
{
    Deserializer first(R"({"x":"1"})");
    Deserializer second(R"({"x":"2"})");
    {
        const Deserializer third(R"({"x":"3"})");
        EXPECT_EQ(third.readString("x"), "3");
    }
    const Deserializer fourth(R"({"x":"4"})");

    EXPECT_EQ(first.readString("x"), "1");
    EXPECT_EQ(second.readString("x"), "2");
    EXPECT_EQ(fourth.readString("x"), "4");
}

TEST(DeserializerTest, ReadsATextThatIsMuchLongerThanTheOneBefore)
{
    const std::string value(200000, 'v');
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Deserializer(R"({"x":"short"})").readString("x"), "short");
        EXPECT_EQ(Deserializer("{\"x\":\"" + value + "\"}").readString("x"), value);
    }
}

} // namespace Corvane::Test
