#include <array>
#include <corvane/foundation/Serializer.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

/// The writer against another implementation of the same format.
namespace Corvane::Test
{

namespace
{

using nlohmann::json;

std::string written(const std::string& value)
{
    Serializer serializer;
    serializer.writeString("", value);
    return serializer.generate();
}

std::string expected(const std::string& value)
{
    return json(value).dump(-1, ' ', false, json::error_handler_t::replace);
}

/// Bytes at which some rule of UTF-8 or of JSON changes.
constexpr std::array<unsigned char, 33> BORDERS = {0x00, 0x08, 0x1F, 0x20, '"',  '/',  'A',  '\\', 0x7F, 0x80, 0x8F,
                                                   0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC,
                                                   0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xF8, 0xFE, 0xFF};

} // namespace

TEST(SerializerOracle, AgreesOnEveryOneAndEveryTwoBytes)
{
    for (int first = 0; first < 256; ++first) {
        const std::string one(1, static_cast<char>(first));
        ASSERT_EQ(written(one), expected(one)) << first;
        for (int second = 0; second < 256; ++second) {
            const std::string two = one + static_cast<char>(second);
            ASSERT_EQ(written(two), expected(two)) << first << ' ' << second;
        }
    }
}

TEST(SerializerOracle, AgreesOnFourBytesAtTheBordersOfTheRules)
{
    std::string value(4, '\0');
    const auto set = [&value](std::size_t at, unsigned char byte) { value[at] = static_cast<char>(byte); };
    for (const unsigned char first : {0xC3, 0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF1, 0xF4, 0xF5}) {
        set(0, first);
        for (const unsigned char second : BORDERS) {
            set(1, second);
            for (const unsigned char third : BORDERS) {
                set(2, third);
                for (const unsigned char fourth : BORDERS) {
                    set(3, fourth);
                    ASSERT_EQ(written(value), expected(value))
                        << json(value).dump(-1, ' ', true, json::error_handler_t::replace);
                }
            }
        }
    }
}

TEST(SerializerOracle, AgreesOnLongRandomBytes)
{
    std::mt19937 random(20240229);
    for (int round = 0; round < 2000; ++round) {
        std::string value(random() % 80, '\0');
        for (char& byte : value)
            byte = static_cast<char>(BORDERS[random() % BORDERS.size()]);
        ASSERT_EQ(written(value), expected(value));
    }
}

TEST(SerializerOracle, ReadsANestedTextAsItWasWritten)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("title", "caf\xC3\xA9 \"9\"\n");
    serializer.beginObject("volume");
    serializer.writeInteger("min", -60);
    serializer.writeUnsigned("max", 4294967295U);
    serializer.endObject("volume");
    serializer.beginArray("flags");
    serializer.writeBoolean("", true);
    serializer.writeNull("");
    serializer.endArray("flags");
    serializer.endObject("");

    const json value = {
        {"title", "caf\xC3\xA9 \"9\"\n"}, {"volume", {{"min", -60}, {"max", 4294967295U}}}, {"flags", {true, nullptr}}};
    EXPECT_EQ(json::parse(serializer.generate()), value);
}

} // namespace Corvane::Test
