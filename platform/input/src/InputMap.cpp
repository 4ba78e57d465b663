#include "InputMap.h"

#include "ButtonCodes.h"
#include <algorithm>
#include <charconv>
#include <corvane/foundation/Deserializer.h>
#include <corvane/input/KeyNames.h>
#include <fnmatch.h>
#include <linux/input.h>
#include <string_view>

namespace Corvane
{

namespace
{

template <class Value>
struct Named {
    const char* name;
    Value value;
};

constexpr Named<InputClass> CLASSES[] = {{"none", InputClass::NONE},
                                         {"mouse", InputClass::MOUSE},
                                         {"keyboard", InputClass::KEYBOARD},
                                         {"remote", InputClass::REMOTE}};

constexpr Named<unsigned int> BUSES[] = {
    {"usb", BUS_USB}, {"bluetooth", BUS_BLUETOOTH}, {"virtual", BUS_VIRTUAL}, {"i8042", BUS_I8042},
    {"i2c", BUS_I2C}, {"host", BUS_HOST},           {"cec", BUS_CEC}};

constexpr int BASE = 16;

/// @return the number that all of the text is, in hexadecimal digits; nothing for any other text
std::optional<unsigned int> readHexadecimal(std::string_view text)
{
    if (text.starts_with("0x"))
        text.remove_prefix(2);
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, BASE);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<unsigned int> readBus(const std::string& text)
{
    const auto* const bus =
        std::ranges::find_if(BUSES, [&](const Named<unsigned int>& entry) { return text == entry.name; });
    return bus != std::end(BUSES) ? std::optional(bus->value) : readHexadecimal(text);
}

std::optional<InputClass> readClass(const std::string& text)
{
    const auto* const found =
        std::ranges::find_if(CLASSES, [&](const Named<InputClass>& entry) { return text == entry.name; });
    return found != std::end(CLASSES) ? std::optional(found->value) : std::nullopt;
}

std::optional<unsigned int> readKey(const std::string& text)
{
    if (const auto code = findKeyCode(text))
        return static_cast<unsigned int>(*code);
    return {};
}

std::optional<unsigned int> readTarget(const std::string& text)
{
    return text == "ignore" ? std::optional<unsigned int>(KEY_RESERVED) : readKey(text);
}

/// Reads the texts of the current object, one after the other. Each is asked for once: what is left over then is
/// nothing that the map knows.
class Reader
{
public:
    explicit Reader(Deserializer& deserializer) : deserializer(deserializer), names(deserializer.getMemberNames()) {}

    bool has(const char* key)
    {
        std::erase(names, key);
        return deserializer.hasMember(key);
    }

    /// @param read  gives nothing for a text that means nothing
    /// @param meaning  what the text has to be, for people
    template <class Read>
    auto read(const char* key, Read read, const char* meaning) -> decltype(read(std::string()))
    {
        if (!has(key))
            return {};
        const std::string text = deserializer.readString(key);
        auto value = read(text);
        if (!value)
            deserializer.fail(key, "\"" + text + "\" is no " + meaning);
        return value;
    }

    /// @param readFrom  reads the names of the members, which `meaning` is for
    template <class Read>
    std::map<unsigned int, unsigned int> readKeys(const char* key, Read readFrom, const char* meaning)
    {
        std::map<unsigned int, unsigned int> keys;
        if (!has(key))
            return keys;
        deserializer.enterMember(key);
        for (const std::string& name : deserializer.getMemberNames()) {
            const std::optional<unsigned int> from = readFrom(name);
            if (!from)
                deserializer.fail(name, std::string("is no ") + meaning);
            const std::string target = deserializer.readString(name);
            const std::optional<unsigned int> to = readTarget(target);
            if (!to)
                deserializer.fail(name, "\"" + target + "\" is no key, and not \"ignore\"");
            keys[*from] = *to;
        }
        deserializer.leaveMember(key);
        return keys;
    }

    void end() const
    {
        if (!names.empty())
            deserializer.fail(names.front(), "means nothing here");
    }

private:
    Deserializer& deserializer;
    std::vector<std::string> names;
};

DeviceRule readRule(const std::string& title, Deserializer& deserializer)
{
    Reader reader(deserializer);
    DeviceRule rule;
    rule.title = title;
    rule.name = reader.read(
        "name", [](const std::string& text) { return std::optional(text); }, "name");
    rule.bus = reader.read("bus", readBus, "bus, nor its hexadecimal number");
    rule.vendor = reader.read("vendor", readHexadecimal, "hexadecimal number");
    rule.product = reader.read("product", readHexadecimal, "hexadecimal number");
    rule.isIgnored = reader.has("ignore") && deserializer.readBoolean("ignore");
    rule.keys = reader.read("class", readClass, "class: mouse, keyboard, remote or none");
    rule.pointer = rule.keys;
    if (const auto pointer = reader.read("pointer", readClass, "class: mouse, keyboard, remote or none"))
        rule.pointer = pointer;
    if (reader.has("session"))
        rule.session = deserializer.readUnsigned("session");
    rule.scans = reader.readKeys("scans", readHexadecimal, "hexadecimal number");
    rule.codes = reader.readKeys("keys", readKey, "key");
    reader.end();
    return rule;
}

/// Whether one of the keys becomes one that is no button.
bool makesKeys(const std::map<unsigned int, unsigned int>& targets)
{
    return std::ranges::any_of(
        targets, [](const auto& entry) { return entry.second != KEY_RESERVED && !isButton(entry.second); });
}

} // namespace

const char* nameOf(InputClass which)
{
    return std::ranges::find(CLASSES, which, &Named<InputClass>::value)->name;
}

std::string nameOfBus(unsigned int bus)
{
    const auto* const named = std::ranges::find(BUSES, bus, &Named<unsigned int>::value);
    if (named != std::end(BUSES))
        return named->name;
    char digits[8];
    return std::string(digits, std::to_chars(std::begin(digits), std::end(digits), bus, BASE).ptr);
}

bool DeviceRule::isAbout(const DeviceIdentity& device) const
{
    return (!name || fnmatch(name->c_str(), device.name.c_str(), 0) == 0) && bus.value_or(device.bus) == device.bus &&
           vendor.value_or(device.vendor) == device.vendor && product.value_or(device.product) == device.product;
}

std::optional<DeviceKind> DeviceRule::decide(const std::optional<DeviceKind>& own) const
{
    if (isIgnored)
        return DeviceKind{};
    if (!own && (!keys || !pointer))
        return {};
    const DeviceKind natural = own.value_or(DeviceKind{});
    DeviceKind kind{keys.value_or(natural.keys), pointer.value_or(natural.pointer)};
    // A mouse has no keys of its own, and a key that the map makes of its thumb's button goes on and off with the
    // mouse.
    if (kind.keys == InputClass::NONE && (makesKeys(scans) || makesKeys(codes)))
        kind.keys = kind.pointer;
    return kind;
}

InputMap::InputMap(const std::string& text)
{
    Deserializer deserializer(text);
    const std::vector<std::string> titles = deserializer.getMemberNames();
    for (std::size_t i = 0; i < titles.size(); ++i) {
        deserializer.beginMember(i);
        deserializer.enterMember(titles[i]);
        rules.push_back(std::make_shared<const DeviceRule>(readRule(titles[i], deserializer)));
        deserializer.leaveMember(titles[i]);
        deserializer.endMember(i);
    }
}

std::shared_ptr<const DeviceRule> InputMap::find(const DeviceIdentity& device) const
{
    const auto found = std::ranges::find_if(rules, [&](const auto& rule) { return rule->isAbout(device); });
    return found != rules.end() ? *found : nullptr;
}

} // namespace Corvane
