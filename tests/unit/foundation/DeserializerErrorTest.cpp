#include "ProblemOf.h"
#include <corvane/foundation/Deserializer.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

namespace Corvane::Test
{

namespace
{

using Rect = ISurfaceCompositing::Rect;

template <class T>
std::string problemOfReading(const std::string& value, const std::string& key = "opacity")
{
    Deserializer deserializer("{\"" + key + "\":" + value + "}");
    return problemOf([&] { deserialize<T>(key, deserializer); });
}

std::string problemOfText(const std::string& text)
{
    return problemOf([&] { Deserializer deserializer(text); });
}

std::string nested(int levels, const std::string& value)
{
    return std::string(static_cast<std::size_t>(levels), '[') + value +
           std::string(static_cast<std::size_t>(levels), ']');
}

} // namespace

TEST(DeserializerErrors, NameTheKeyAndWhatWasFoundInsteadOfAnUnsignedNumber)
{
    const std::string head = "opacity: expected an unsigned 32-bit number, found ";
    EXPECT_EQ(problemOfReading<unsigned int>("\"12\""), head + "string");
    EXPECT_EQ(problemOfReading<unsigned int>("null"), head + "null");
    EXPECT_EQ(problemOfReading<unsigned int>("[1]"), head + "array");
    EXPECT_EQ(problemOfReading<unsigned int>("{}"), head + "object");
    EXPECT_EQ(problemOfReading<unsigned int>("true"), head + "true");
    EXPECT_EQ(problemOfReading<unsigned int>("-1"), head + "-1");
    EXPECT_EQ(problemOfReading<unsigned int>("4294967296"), head + "4294967296");
    EXPECT_EQ(problemOfReading<unsigned int>("18446744073709551615"), head + "18446744073709551615");
    EXPECT_EQ(problemOfReading<unsigned int>("-9223372036854775808"), head + "-9223372036854775808");
    EXPECT_EQ(problemOfReading<unsigned int>("1.5"), head + "1.5");
    EXPECT_EQ(problemOfReading<unsigned int>("1.0"), head + "1.0");
    EXPECT_EQ(problemOfReading<unsigned int>("1e0"), head + "1.0");
    EXPECT_EQ(problemOfReading<unsigned int>("-0.0"), head + "-0.0");
    EXPECT_EQ(problemOfReading<unsigned int>("1e300"), head + "1e+300");
}

TEST(DeserializerErrors, NameTheKeyAndWhatWasFoundInsteadOfASignedNumber)
{
    const std::string head = "opacity: expected a signed 32-bit number, found ";
    EXPECT_EQ(problemOfReading<int>("\"x\""), head + "string");
    EXPECT_EQ(problemOfReading<int>("2147483648"), head + "2147483648");
    EXPECT_EQ(problemOfReading<int>("-2147483649"), head + "-2147483649");
    EXPECT_EQ(problemOfReading<int>("1.5"), head + "1.5");
    EXPECT_EQ(problemOfReading<int>("false"), head + "false");
}

TEST(DeserializerErrors, NameTheKeyAndWhatWasFoundInsteadOfAString)
{
    const std::string head = "opacity: expected a string, found ";
    EXPECT_EQ(problemOfReading<std::string>("5"), head + "5");
    EXPECT_EQ(problemOfReading<std::string>("null"), head + "null");
    EXPECT_EQ(problemOfReading<std::string>("true"), head + "true");
    EXPECT_EQ(problemOfReading<std::string>("[]"), head + "array");
}

TEST(DeserializerErrors, NameTheKeyAndWhatWasFoundInsteadOfATruthValue)
{
    const std::string head = "opacity: expected true or false, found ";
    EXPECT_EQ(problemOfReading<bool>("0"), head + "0");
    EXPECT_EQ(problemOfReading<bool>("1"), head + "1");
    EXPECT_EQ(problemOfReading<bool>("\"true\""), head + "string");
    EXPECT_EQ(problemOfReading<bool>("null"), head + "null");
}

TEST(DeserializerErrors, NameAKeyThatIsMissing)
{
    Deserializer deserializer(R"({"Opacity":1})");

    EXPECT_EQ(problemOf([&] { deserialize<unsigned int>("opacity", deserializer); }), "opacity: missing");
    EXPECT_EQ(problemOf([&] { deserialize<std::string>("opacity", deserializer); }), "opacity: missing");
    EXPECT_EQ(problemOf([&] { deserialize<Rect>("location", deserializer); }), "location: missing");
}

TEST(DeserializerErrors, NameTheWholePathOfANestedKey)
{
    EXPECT_EQ(problemOfReading<Rect>(R"({"x":1,"y":2,"width":"3","height":4})", "location"),
              "location.width: expected an unsigned 32-bit number, found string");
    EXPECT_EQ(problemOfReading<Rect>(R"({"x":1,"y":2,"width":3})", "location"), "location.height: missing");
    Deserializer deserializer(R"({"a":{"b":{"location":{"x":1.5}}}})");
    deserializer.enterMember("a");
    deserializer.enterMember("b");
    EXPECT_EQ(problemOf([&] { deserialize<Rect>("location", deserializer); }),
              "a.b.location.x: expected a signed 32-bit number, found 1.5");
}

TEST(DeserializerErrors, SayThatAMemberIsNoObject)
{
    EXPECT_EQ(problemOfReading<Rect>("[1,2,3,4]", "location"), "location: expected an object, found array");
    EXPECT_EQ(problemOfReading<Rect>("null", "location"), "location: expected an object, found null");
    EXPECT_EQ(problemOfReading<Rect>("-7", "location"), "location: expected an object, found -7");
}

TEST(DeserializerErrors, SayThatTheTextItselfIsNoObject)
{
    for (const auto& [text, kind] : {std::tuple{"[1]", "array"}, {"\"a\"", "string"}, {"17", "17"}, {"null", "null"}}) {
        const std::string problem = std::string("expected an object, found ") + kind;
        Deserializer deserializer(text);
        EXPECT_EQ(problemOf([&] { deserializer.readString("key"); }), problem);
        EXPECT_EQ(problemOf([&] { deserializer.hasMember("key"); }), problem);
        EXPECT_EQ(problemOf([&] { deserializer.getMemberNames(); }), problem);
        EXPECT_EQ(problemOf([&] { deserializer.getMemberCount(); }), problem);
        EXPECT_EQ(problemOf([&] { deserializer.beginMember(0); }), problem);
        EXPECT_EQ(problemOf([&] { deserializer.enterMember("key"); }), problem);
    }
}

TEST(DeserializerErrors, ShowAnEmptyKeyInQuotes)
{
    EXPECT_EQ(problemOfReading<int>("\"x\"", ""), "\"\": expected a signed 32-bit number, found string");
    Deserializer deserializer("{}");
    EXPECT_EQ(problemOf([&] { deserializer.readInteger(""); }), "\"\": missing");
}

TEST(DeserializerErrors, ShowAKeyInReadableForm)
{
    Deserializer deserializer(R"({"\u0000\n\u00e9":{"x":true}})");
    deserializer.enterMember(deserializer.getMemberNames().at(0));
    EXPECT_EQ(problemOf([&] { deserializer.readInteger("x"); }),
              "\\u0000\\n\xC3\xA9.x: expected a signed 32-bit number, found true");
}

TEST(DeserializerErrors, CutALongKeyShort)
{
    const std::string key(100000, 'k');
    EXPECT_EQ(problemOfReading<int>("\"x\"", key),
              std::string(64, 'k') + "...: expected a signed 32-bit number, found string");
    const std::string umlauts = "k" + std::string(63, 'k').replace(62, 1, "\xC3\xA4");
    EXPECT_EQ(problemOfReading<int>("1.5", umlauts),
              std::string(63, 'k') + "...: expected a signed 32-bit number, found 1.5")
        << "no half character";
}

TEST(DeserializerErrors, CarryTheProblemThatAReaderReports)
{
    Deserializer deserializer(R"({"a":{}})");
    EXPECT_EQ(problemOf([&] { deserializer.fail("key", "too red"); }), "key: too red");
    EXPECT_EQ(problemOf([&] { deserializer.fail("", "too red"); }), "too red");
    deserializer.enterMember("a");
    EXPECT_EQ(problemOf([&] { deserializer.fail("key", "too red"); }), "a.key: too red");
    EXPECT_EQ(problemOf([&] { deserializer.fail("", "too red"); }), "a: too red");
}

TEST(DeserializerErrors, SayWhatIsWrongWithTheWholeText)
{
    EXPECT_EQ(problemOfText(""), "the text is empty");
    EXPECT_EQ(problemOfText(" \n\t\r "), "the text is empty");
    EXPECT_EQ(problemOfText("{\"a\":\"\xC0\xAF\"}"), "not valid UTF-8");
    EXPECT_EQ(problemOfText("{\"a\":\"\xED\xA0\x80\"}"), "not valid UTF-8");
    EXPECT_EQ(problemOfText("{\"a\":\"\xE2\x82\"}"), "not valid UTF-8");
    EXPECT_EQ(problemOfText("{\"\xFF\":1}"), "not valid UTF-8");
    EXPECT_EQ(problemOfText(R"({"a":1e400})"), "a number is malformed or cannot be represented");
    EXPECT_EQ(problemOfText(R"({"a":18446744073709551616})"), "a number is malformed or cannot be represented");
    EXPECT_EQ(problemOfText(R"({"a":-9223372036854775809})"), "a number is malformed or cannot be represented");
    EXPECT_EQ(problemOfText(R"({"a":0128})"), "a number is malformed or cannot be represented");
    EXPECT_EQ(problemOfText(R"({"a":"\x"})"), "a string has a malformed escape");
    EXPECT_EQ(problemOfText(R"({"a":"\ud800"})"), "a string has a malformed escape");
    EXPECT_EQ(problemOfText(R"({"a":"\udc00"})"), "a string has a malformed escape");
    EXPECT_EQ(problemOfText("{\"a\":\"\n\"}"), "a string has a control character that is not escaped");
    EXPECT_EQ(problemOfText("{\"a\":\"b}"), "a string is not closed");
}

TEST(DeserializerErrors, SayThatATextIsNoJson)
{
    for (const char* text : {"{", "}", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{,}", "{a:1}", "{'a':1}", "[1 2]", "[1,]",
                             "nul", "True", "NaN", "{\"a\":1]", "/* c */ {}", "{\"a\" 1}", ",", "\xEF\xBB\xBF{}"})
        EXPECT_EQ(problemOfText(text), "not valid JSON") << text;
}

TEST(DeserializerErrors, SayThatTheTextGoesOnAfterItsValue)
{
    for (const std::string text :
         {"{} x", "{}{}", "{\"a\":\"}\"}]", "[1],", "1 2", "\"a\" \"b\"", "{}//", "{}}", "true false"})
        EXPECT_EQ(problemOfText(text), "text after the end of the value") << text;
    EXPECT_EQ(problemOfText(std::string("{}\0", 3)), "text after the end of the value");
    EXPECT_EQ(problemOfText("{} \r\n\t "), "(no error)") << "white space is no text";
}

TEST(DeserializerErrors, LimitTheNestingTo64Levels)
{
    EXPECT_EQ(problemOfText(nested(64, "1")), "(no error)");
    EXPECT_EQ(problemOfText(nested(65, "1")), "nested deeper than 64 levels");
    EXPECT_EQ(problemOfText(nested(1000000, "")), "nested deeper than 64 levels");
    EXPECT_EQ(problemOfText(std::string(1000000, '[')), "not valid JSON");
    std::string objects;
    for (int i = 0; i < 65; ++i)
        objects += "{\"a\":";
    EXPECT_EQ(problemOfText(objects + "1" + std::string(65, '}')), "nested deeper than 64 levels");
}

TEST(DeserializerErrors, LeaveTheParserUsable)
{
    for (int i = 0; i < 20; ++i) {
        EXPECT_NE(problemOfText("{\"a\":"), "(no error)");
        EXPECT_EQ(Deserializer("{\"a\":\"b\"}").readString("a"), "b");
    }
}

} // namespace Corvane::Test
