#include "JsonText.h"

#include "JsonScanner.h"
#include "ProblemOf.h"
#include <corvane/foundation/SerialError.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Strings = std::vector<std::string>;

Strings rawElements(const std::string& array)
{
    Strings result;
    JsonText(array).forEachElement([&](simdjson::dom::element, std::string_view raw) { result.emplace_back(raw); });
    return result;
}

} // namespace

TEST(JsonTextTest, GivesAMemberAsItStandsInTheText)
{
    const JsonText text(" \n{ \"id\" : \"a\\u0031\" ,\t\"params\":{ \"b\" : [ 1, \"}\\\"]\" ] } ,\"n\":-1.50e2\r\n} ");

    EXPECT_EQ(text.rawMember("id"), "\"a\\u0031\"");
    EXPECT_EQ(text.rawMember("params"), "{ \"b\" : [ 1, \"}\\\"]\" ] }");
    EXPECT_EQ(text.rawMember("n"), "-1.50e2");
    EXPECT_EQ(text.rawMember("b"), "") << "only the text's own members";
    EXPECT_EQ(text.rawMember("none"), "");
}

TEST(JsonTextTest, GivesTheLastMemberOfAName)
{
    const JsonText text(R"({"id":1,"i\u0064":2,"params":{"id":3}})");

    EXPECT_EQ(text.rawMember("id"), "2");
}

TEST(JsonTextTest, GivesNoMemberOfWhatIsNoObject)
{
    EXPECT_EQ(JsonText("[1]").rawMember("id"), "");
    EXPECT_EQ(JsonText("\"id\"").rawMember("id"), "");
    EXPECT_EQ(JsonText("{}").rawMember(""), "");
}

TEST(JsonTextTest, VisitsNameValueAndSourceOfEachMember)
{
    const JsonText text(R"({"a\n":"x\ty","b":null})");
    Strings visited;
    text.forEachMember([&](std::string_view name, simdjson::dom::element value, std::string_view raw) {
        visited.push_back(std::string(name) + '|' + (value.is_string() ? std::string(std::string_view(value)) : "-") +
                          '|' + std::string(raw));
    });

    EXPECT_EQ(visited, (Strings{"a\n|x\ty|\"x\\ty\"", "b|-|null"}));
}

TEST(JsonTextTest, VisitsTheElementsOfAnArrayAsTheyStandInTheText)
{
    EXPECT_EQ(rawElements(R"( [ {"a":[1,2]} ,"]",[ ], true,-0.5e1,"\\",{}] )"),
              (Strings{R"({"a":[1,2]})", R"("]")", "[ ]", "true", "-0.5e1", R"("\\")", "{}"}));
    EXPECT_EQ(rawElements("[]"), Strings{});
    EXPECT_EQ(rawElements("{\"a\":1}"), Strings{});
}

TEST(JsonTextTest, AgreesWithAnotherReaderOnEveryPiece)
{
    const std::string source = R"({"jsonrpc":"2.0","method":"I::m","params":{"list":[1,{"x":"\"}"},[[]]],"s":"[{"},)"
                               R"("id":"\\\"","deep":{"a":{"b":{"c":[true,false,null,1e3]}}}})";
    const nlohmann::json whole = nlohmann::json::parse(source);
    const JsonText text(source);
    std::size_t count = 0;
    text.forEachMember([&](std::string_view name, simdjson::dom::element, std::string_view raw) {
        EXPECT_EQ(nlohmann::json::parse(raw), whole[std::string(name)]);
        ++count;
    });
    EXPECT_EQ(count, whole.size());
}

TEST(JsonTextTest, DecodesAString)
{
    EXPECT_EQ(decodeString(R"("a\u0031\n")"), "a1\n");
    EXPECT_EQ(problemOf([] { decodeString("1"); }), "expected a string");
    EXPECT_EQ(problemOf([] { decodeString("\"a"); }), "a string is not closed");
}

TEST(JsonTextTest, TellsNestingFromOtherFaults)
{
    EXPECT_THROW(JsonText(std::string(100, '[') + "1" + std::string(100, ']')), NestingError);
    EXPECT_EQ(problemOf([] { JsonText("{"); }), "not valid JSON");
}

TEST(JsonTextTest, LivesBesideOthers)
{
    const JsonText outer(R"({"id":"outer"})");
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(JsonText(R"({"id":"inner"})").rawMember("id"), "\"inner\"");
    EXPECT_EQ(outer.rawMember("id"), "\"outer\"");
}

TEST(JsonScannerTest, StaysInsideATextThatIsNoJson)
{
    for (const std::string text : {"", "{", "\"", "\"\\", "[[[", "}", "]]", "{\"a", ":,:", "tru", "{]\"}"}) {
        JsonScanner scanner(text);
        scanner.enter();
        for (int i = 0; i < 5; ++i)
            EXPECT_LE(scanner.next().size(), text.size());
        EXPECT_LE(scanner.getRest().size(), text.size());
    }
}

} // namespace Corvane::Test
