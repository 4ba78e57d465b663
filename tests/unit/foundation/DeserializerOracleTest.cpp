#include "ProblemOf.h"
#include <corvane/foundation/Deserializer.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

/// The reader against another implementation of the same format.
namespace Corvane::Test
{

namespace
{

using nlohmann::json;

bool isAccepted(const std::string& text)
{
    return problemOf([&] { Deserializer deserializer(text); }) == "(no error)";
}

const std::string SEEDS[] = {
    R"({"jsonrpc":"2.0","id":17,"method":"IWindow::setLocation","params":{"location":{"x":0,"y":-1,"width":2,"height":3}}})",
    R"({"type":"MouseEvent","buttons":{"isLeftPressed":true},"position":{"x":1,"y":2},"movement":{}})",
    R"([null, true, false, -1.5e-3, "a\u00e9\ud83d\ude00\\\"\n", [], {}, [[0]], {"a":{"b":[1,2,{"c":""}]}}])",
    "{\"caf\xC3\xA9\":\"\xF0\x9F\x98\x80\",\"\":0}"};

/// Texts in which something small is wrong, most of the time.
std::string damage(std::string text, std::mt19937& random)
{
    static const std::string PIECES[] = {"\"", "\\", "{", "}",    "[",    "]",  ",", ":", "0",
                                         "-",  "e",  ".", "\x80", "\xC3", "\n", " ", "u", std::string(1, '\0')};
    const std::string& piece = PIECES[random() % std::size(PIECES)];
    const std::size_t at = random() % text.size();
    switch (random() % 3) {
    case 0:
        return text.insert(at, piece);
    case 1:
        return text.erase(at, 1);
    default:
        return text.replace(at, 1, piece);
    }
}

} // namespace

TEST(DeserializerOracle, AcceptsWhatIsJsonAndNothingElse)
{
    std::mt19937 random(19700101);
    int valid = 0;
    int invalid = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = damage(SEEDS[random() % std::size(SEEDS)], random);
        const bool isJson = json::accept(text);
        ASSERT_EQ(isAccepted(text), isJson) << text;
        ++(isJson ? valid : invalid);
    }
    // The comparison means something only if both kinds occurred.
    EXPECT_GT(valid, 1000);
    EXPECT_GT(invalid, 1000);
}

TEST(DeserializerOracle, ReadsTheValuesThatTheOtherOneWrote)
{
    std::mt19937 random(42);
    for (int round = 0; round < 1000; ++round) {
        std::string text;
        for (unsigned int length = random() % 20; length > 0; --length)
            text += static_cast<char>(random() % 128);
        const auto number = static_cast<std::uint32_t>(random());
        const auto integer = static_cast<std::int32_t>(random());
        const json value = {{"s", text}, {"u", number}, {"i", integer}, {"b", number % 2 == 0}};

        Deserializer deserializer(value.dump(static_cast<int>(random() % 3) - 1, ' ', random() % 2 == 0));
        ASSERT_EQ(deserializer.readString("s"), text);
        ASSERT_EQ(deserializer.readUnsigned("u"), number);
        ASSERT_EQ(deserializer.readInteger("i"), integer);
        ASSERT_EQ(deserializer.readBoolean("b"), number % 2 == 0);
    }
}

} // namespace Corvane::Test
