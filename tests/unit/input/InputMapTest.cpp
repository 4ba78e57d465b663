#include "InputMap.h"
#include "EventTranslator.h"
#include "KeyMapping.h"

#include <corvane/foundation/SerialError.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <string>
#include <support/EventText.h>
#include <utility>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Texts = std::vector<std::string>;

const DeviceIdentity REMOTE{.name = "ACME Remote 2", .bus = BUS_USB, .vendor = 0x46d, .product = 0xc52b};

std::string problemWith(const std::string& text)
{
    try {
        const InputMap map(text);
        return "none";
    } catch (const SerialError& error) {
        return error.what();
    }
}

/// Whether a rule with these members is about the remote control.
bool isAbout(const std::string& members)
{
    return InputMap("{\"one\":{" + members + "}}").find(REMOTE) != nullptr;
}

DeviceRule ruleOf(const std::string& members)
{
    const InputMap map("{\"one\":{" + members + "}}");
    return *map.find({});
}

/// What a device with these rules gives, in words.
class KeyMappingOf : public ::testing::Test
{
protected:
    KeyMappingOf() { translator.enable({.keys = true, .pointer = true}); }

    void use(const std::string& members) { mapping.setRule(std::make_shared<const DeviceRule>(ruleOf(members))); }
    void report(unsigned int type, unsigned int code, int value) { mapping.handle(type, code, value, translator); }
    void key(unsigned int code, int value) { report(EV_KEY, code, value); }
    void scan(int value) { report(EV_MSC, MSC_SCAN, value); }
    void end() { report(EV_SYN, SYN_REPORT, 0); }
    Texts take() { return std::exchange(texts, {}); }

    Texts texts;
    EventTranslator translator{
        false, [this](const EventTranslator::EventPointer& event) { texts.push_back(eventText(*event)); }};
    KeyMapping mapping;
};

} // namespace

TEST(InputMapText, TellsDevicesByNameBusVendorAndProduct)
{
    for (const char* const about :
         {"", R"("name":"ACME Remote 2")", R"("name":"ACME*")", R"("bus":"usb")", R"("bus":"0003")",
          R"("vendor":"046d","product":"0xC52B")", R"("name":"* Remote ?","bus":"usb","vendor":"46d")"})
        EXPECT_TRUE(isAbout(about)) << about;
    for (const char* const about :
         {R"("name":"ACME")", R"("bus":"bluetooth")", R"("vendor":"046e")", R"("name":"ACME*","product":"c52c")"})
        EXPECT_FALSE(isAbout(about)) << about;
}

TEST(InputMapText, LetsTheFirstRuleThatIsAboutADeviceCount)
{
    const InputMap map(R"({"other":{"name":"Other"},"box":{"vendor":"46d","session":2},"box":{"session":3}})");

    EXPECT_EQ(map.find(REMOTE)->title, "box");
    EXPECT_EQ(map.find(REMOTE)->session, 2U);
    EXPECT_EQ(map.find({})->session, 3U);
    EXPECT_EQ(InputMap().find(REMOTE), nullptr);
    EXPECT_EQ(InputMap("{}").find(REMOTE), nullptr);
}

TEST(InputMapText, SaysWhatItCannotMakeOutAndWhere)
{
    EXPECT_EQ(problemWith("{}"), "none");
    EXPECT_EQ(problemWith(R"({"one":{"vendr":"1"}})"), "one.vendr: means nothing here");
    EXPECT_EQ(problemWith(R"({"one":{"vendor":"x"}})"), R"(one.vendor: "x" is no hexadecimal number)");
    EXPECT_EQ(problemWith(R"({"one":{"vendor":"100000000"}})"), R"(one.vendor: "100000000" is no hexadecimal number)");
    EXPECT_EQ(problemWith(R"({"one":{"vendor":1}})"), "one.vendor: expected a string, found 1");
    EXPECT_EQ(problemWith(R"({"one":{"bus":"ubs"}})"), R"(one.bus: "ubs" is no bus, nor its hexadecimal number)");
    EXPECT_EQ(problemWith(R"({"one":{"class":"mice"}})"),
              R"(one.class: "mice" is no class: mouse, keyboard, remote or none)");
    EXPECT_EQ(problemWith(R"({"one":{"session":-1}})"), "one.session: expected an unsigned 32-bit number, found -1");
    EXPECT_EQ(problemWith(R"({"one":{"keys":{"KEY_F99":"KEY_OK"}}})"), "one.keys.KEY_F99: is no key");
    EXPECT_EQ(problemWith(R"({"one":{"keys":{"KEY_OK":"nothing"}}})"),
              R"(one.keys.KEY_OK: "nothing" is no key, and not "ignore")");
    EXPECT_EQ(problemWith(R"({"one":{"scans":{"OK":"KEY_OK"}}})"), "one.scans.OK: is no hexadecimal number");
    EXPECT_NE(problemWith("[]"), "none");
    EXPECT_NE(problemWith(""), "none");
}

TEST(InputMapText, DecidesWhatADeviceIsTakenFor)
{
    const DeviceKind keyboard{InputClass::KEYBOARD, InputClass::KEYBOARD};
    const DeviceKind mouse{InputClass::NONE, InputClass::MOUSE};

    EXPECT_EQ(ruleOf("").decide(keyboard), keyboard);
    EXPECT_EQ(ruleOf("").decide({}), std::nullopt);
    EXPECT_EQ(ruleOf(R"("class":"remote")").decide({}), (DeviceKind{InputClass::REMOTE, InputClass::REMOTE}));
    EXPECT_EQ(ruleOf(R"("class":"remote","pointer":"none")").decide(keyboard),
              (DeviceKind{InputClass::REMOTE, InputClass::NONE}));
    EXPECT_EQ(ruleOf(R"("pointer":"mouse")").decide({}), std::nullopt);
    EXPECT_EQ(ruleOf(R"("pointer":"mouse")").decide(keyboard), (DeviceKind{InputClass::KEYBOARD, InputClass::MOUSE}));
    EXPECT_EQ(ruleOf(R"("ignore":true,"class":"remote")").decide({}), DeviceKind{});
    EXPECT_EQ(ruleOf(R"("ignore":false)").decide(mouse), mouse);
    // A key that a mouse has only by the map follows the mouse; a button needs no such thing.
    EXPECT_EQ(ruleOf(R"("keys":{"BTN_SIDE":"KEY_BACK"})").decide(mouse),
              (DeviceKind{InputClass::MOUSE, InputClass::MOUSE}));
    EXPECT_EQ(ruleOf(R"("keys":{"BTN_SIDE":"BTN_MIDDLE","BTN_EXTRA":"ignore"})").decide(mouse), mouse);
}

TEST_F(KeyMappingOf, NothingLeavesAllAsItIs)
{
    scan(0x1001);
    key(KEY_F1, 1);
    end();

    EXPECT_EQ(take(), Texts{"KEY_F1 pressed"});
}

TEST_F(KeyMappingOf, AKeyIsForPressRepetitionAndRelease)
{
    use(R"("keys":{"KEY_F1":"KEY_RED","KEY_SLEEP":"ignore","BTN_EXTRA":"KEY_BACK"})");

    for (const int value : {1, 2, 0})
        key(KEY_F1, value);
    key(KEY_SLEEP, 1);
    key(KEY_SLEEP, 0);
    key(KEY_RED, 1);
    key(BTN_EXTRA, 1);

    EXPECT_EQ(take(),
              (Texts{"KEY_RED pressed", "KEY_RED pressed", "KEY_RED released", "KEY_RED pressed", "KEY_BACK pressed"}));
}

TEST_F(KeyMappingOf, AScanCodeCountsBeforeThatOfItsKey)
{
    use(R"("scans":{"1e01":"KEY_OK"},"keys":{"KEY_UNKNOWN":"KEY_INFO"})");

    scan(0x1e01);
    key(KEY_UNKNOWN, 1);
    end();
    key(KEY_UNKNOWN, 0);
    end();
    scan(0x1e02);
    key(KEY_UNKNOWN, 1);
    end();

    EXPECT_EQ(take(), (Texts{"KEY_OK pressed", "KEY_OK released", "KEY_INFO pressed"}));
}

TEST_F(KeyMappingOf, AScanCodeWithoutAKeyIsAPressAndARelease)
{
    use(R"("scans":{"1e01":"KEY_OK","80000001":"KEY_INFO"})");

    for (int i = 0; i < 2; ++i) {
        scan(0x1e01);
        end();
    }
    EXPECT_EQ(take(), (Texts{"KEY_OK pressed", "KEY_OK released", "KEY_OK pressed", "KEY_OK released"}));
    scan(0x1e02);
    end();
    EXPECT_EQ(take(), Texts{});
    scan(static_cast<int>(0x80000001U));
    end();
    EXPECT_EQ(take(), (Texts{"KEY_INFO pressed", "KEY_INFO released"}));
}

TEST_F(KeyMappingOf, AScanCodeWhoseKeyIsHeldAddsNoPresses)
{
    use(R"("scans":{"1e01":"KEY_OK"})");
    scan(0x1e01);
    key(KEY_F1, 1);
    end();
    ASSERT_EQ(take(), Texts{"KEY_OK pressed"});

    scan(0x1e01);
    end();
    key(KEY_F1, 0);
    scan(0x1e01);
    end();

    EXPECT_EQ(take(), Texts{"KEY_OK released"});
}

TEST_F(KeyMappingOf, AScanCodeEndsWithItsFrame)
{
    use(R"("scans":{"1e01":"KEY_OK"})");

    scan(0x1e01);
    report(EV_SYN, SYN_DROPPED, 0);
    key(KEY_F1, 1);
    end();

    EXPECT_EQ(take(), Texts{"KEY_F1 pressed"});
}

TEST_F(KeyMappingOf, AKeyIsForOneThatIsDownAtFirstToo)
{
    use(R"("keys":{"KEY_CAPSLOCK":"KEY_LEFTSHIFT"})");
    translator.setDown(mapping.setDown(KEY_CAPSLOCK));

    key(KEY_CAPSLOCK, 2);
    key(KEY_CAPSLOCK, 0);

    EXPECT_EQ(take(), (Texts{"KEY_LEFTSHIFT pressed", "KEY_LEFTSHIFT released"}));
}

} // namespace Corvane::Test
