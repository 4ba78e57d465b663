#include "JsonText.h"
#include <allocation/AllocationCount.h>
#include <array>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace Corvane::Test
{

namespace
{

template <class Work>
unsigned long allocationsOf(Work work)
{
    const unsigned long before = countAllocations();
    work();
    return countAllocations() - before;
}

} // namespace

TEST(Allocations, AreSeenByThisProgramInsideTheLibraryToo)
{
    const ISurfaceCompositing::Rect rect(1, 2, 3, 4);

    EXPECT_GT(allocationsOf([&] { rect.clone(); }), 0U);
    EXPECT_GT(allocationsOf([&] { rect.serialize(); }), 0U);
}

TEST(Allocations, ANotificationIsWrittenWithoutAny)
{
    const std::string uid = "0123456789abcdef0123456789abcdef";
    const std::string name = "IApplication::onStateChange";
    std::string sent;
    sent.reserve(512);

    const unsigned long count = allocationsOf([&] {
        Serializer payload;
        payload.beginObject("");
        serialize("uid", uid, payload);
        serialize("oldState", "RUNNING", payload);
        serialize("newState", "ABORTED", payload);
        payload.endObject("");
        Serializer message;
        message.beginObject("");
        message.writeString("jsonrpc", "2.0");
        message.writeString("method", name);
        message.writeJson("params", payload.generate());
        message.endObject("");
        sent = message.generate();
    });

    EXPECT_EQ(count, 0U);
    EXPECT_EQ(sent, "{\"jsonrpc\":\"2.0\",\"method\":\"IApplication::onStateChange\",\"params\":{\"uid\":\"" + uid +
                        "\",\"oldState\":\"RUNNING\",\"newState\":\"ABORTED\"}}");
}

TEST(Allocations, AnObjectIsWrittenIntoASerializerWithoutAny)
{
    const IRPC::RPCNotificationObject notification("IWindow::onOpacityChange", "{\"uid\":\"7\"}");
    std::size_t size = 0;

    const unsigned long count = allocationsOf([&] {
        Serializer serializer;
        notification.serialize("", serializer);
        size = serializer.generate().size();
    });

    EXPECT_EQ(count, 0U);
    EXPECT_EQ(size, notification.serialize().size());
}

TEST(Allocations, ATextOf512BytesIsWrittenWithoutAny)
{
    const std::string value(510, 'x');

    EXPECT_EQ(allocationsOf([&] { Serializer().writeString("", value); }), 0U);
    EXPECT_GT(allocationsOf([&] { Serializer().writeString("", value + value); }), 0U);
}

TEST(Allocations, FourSerializersAreReadyAtOnceAndTheFifthComesFromTheHeap)
{
    std::array<std::optional<Serializer>, 5> serializers;

    EXPECT_EQ(allocationsOf([&] {
                  for (int i = 0; i < 4; ++i)
                      serializers[i].emplace();
              }),
              0U);
    EXPECT_GT(allocationsOf([&] { serializers[4].emplace(); }), 0U);
    serializers[4]->writeString("", "fifth");
    EXPECT_EQ(serializers[4]->generate(), "\"fifth\"");
}

TEST(Allocations, ASlotThatGrewBeyond64KiBIsShrunkWhenItIsGivenBack)
{
    for (const std::size_t size : {std::size_t{100'000}, std::size_t{1'000'000}})
        Serializer().writeString("", std::string(size, 'x'));

    std::array<std::optional<Serializer>, 4> serializers;
    for (auto& serializer : serializers) {
        serializer.emplace();
        EXPECT_LE(serializer->generate().capacity(), 64U * 1024);
        EXPECT_GE(serializer->generate().capacity(), 512U);
    }
}

TEST(Allocations, ASlotThatGrewALittleStaysAsItIs)
{
    const std::string value(10'000, 'x');
    Serializer().writeString("", value);

    EXPECT_EQ(allocationsOf([&] { Serializer().writeString("", value); }), 0U);
}

TEST(Allocations, ASmallTextIsParsedWithoutAnyOnceTheParserIsWarm)
{
    const std::string call =
        R"({"jsonrpc":"2.0","id":17,"method":"IWindow::setOpacity","params":{"opacity":128,"name":"a\nb"}})";
    const JsonText warmUp(call);
    std::size_t size = 0;

    EXPECT_GT(allocationsOf([&] { const JsonText second(call); }), 0U) << "the second slot is still cold";
    EXPECT_EQ(allocationsOf([&] {
                  const JsonText text(call);
                  size = text.rawMember("params").size();
              }),
              0U);
    EXPECT_EQ(size, std::string(R"({"opacity":128,"name":"a\nb"})").size());
}

TEST(Allocations, AParserThatGrewBeyond64KiBIsDropped)
{
    const std::string small = "{\"opacity\":128}";
    JsonText("\"" + std::string(70'000, 'x') + "\"");
    EXPECT_GT(allocationsOf([&] { const JsonText text(small); }), 0U) << "the large parser was kept";
    EXPECT_EQ(allocationsOf([&] { const JsonText text(small); }), 0U);

    JsonText("\"" + std::string(30'000, 'x') + "\"");
    EXPECT_EQ(allocationsOf([&] { const JsonText text(small); }), 0U) << "a parser of moderate size was dropped";
}

} // namespace Corvane::Test
