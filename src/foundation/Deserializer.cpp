#include <corvane/foundation/Deserializer.h>

#include "JsonText.h"
#include "Quote.h"
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace Corvane
{

using simdjson::dom::element;
using simdjson::dom::key_value_pair;
using simdjson::dom::object;

namespace
{

/// An object that was entered, and where the walk over its members stands.
struct Level {
    std::string_view name; ///< in the enclosing object; empty for the text itself
    element value;

    object::iterator member{}; ///< member number `index`; valid once `isWalked`
    std::size_t index = 0;
    bool isWalked = false;
    bool isPinned = false; ///< between beginMember and endMember
};

std::string describeNumber(double value)
{
    char digits[32];
    std::string text(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
    // 1.0 and 1e0 are no integers in form, which is what is wrong with them where an integer is due.
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    return text;
}

/// @return the value of a number or a truth value, the kind of anything else
std::string describe(element value)
{
    switch (value.type()) {
    case simdjson::dom::element_type::ARRAY:
        return "array";
    case simdjson::dom::element_type::OBJECT:
        return "object";
    case simdjson::dom::element_type::STRING:
        return "string";
    case simdjson::dom::element_type::INT64:
        return std::to_string(value.get_int64().value_unsafe());
    case simdjson::dom::element_type::UINT64:
        return std::to_string(value.get_uint64().value_unsafe());
    case simdjson::dom::element_type::DOUBLE:
        return describeNumber(value.get_double().value_unsafe());
    case simdjson::dom::element_type::BOOL:
        return value.get_bool().value_unsafe() ? "true" : "false";
    default:
        return "null";
    }
}

/// Reports what is wrong with the member `name` of the current object. To `fail`, an empty key is the object itself.
[[noreturn]] void failMember(const std::string& name, const std::string& problem, const Deserializer& deserializer)
{
    deserializer.fail(name, name.empty() ? "\"\": " + problem : problem);
}

} // namespace

struct Deserializer::Document {
    explicit Document(const std::string& source) : text(source), root{.name = {}, .value = text.root()} {}

    Level& current() { return inner.empty() ? root : inner.back(); }

    JsonText text;
    Level root;
    std::vector<Level> inner; ///< below the root; most texts are flat, and then it takes no memory
};

namespace
{

/// Finds what `name` means in this object: the member that is pinned if it has that name, else the last of that name.
std::optional<key_value_pair> find(const Level& level, object members, std::string_view name)
{
    if (level.isPinned && level.member.key() == name)
        return *level.member;
    std::optional<key_value_pair> found;
    for (auto member = members.begin(); member != members.end(); ++member)
        if (member.key() == name)
            found.emplace(*member);
    return found;
}

object membersOf(const Level& level, const Deserializer& deserializer)
{
    object members;
    if (level.value.get(members) != simdjson::SUCCESS)
        deserializer.fail({}, "expected an object, found " + describe(level.value));
    return members;
}

key_value_pair require(const Level& level, const std::string& name, const Deserializer& deserializer)
{
    const std::optional<key_value_pair> member = find(level, membersOf(level, deserializer), name);
    if (!member)
        failMember(name, "missing", deserializer);
    return *member;
}

/// Reads the member `name` as what simdjson calls Source, provided that it fits into T.
template <class T, class Source>
T read(const Level& level, const std::string& name, const char* expectation, const Deserializer& deserializer)
{
    const element value = require(level, name, deserializer).value;
    Source source{};
    bool fits = value.get(source) == simdjson::SUCCESS;
    if constexpr (std::is_same_v<Source, std::int64_t>)
        fits = fits && std::in_range<T>(source);
    if (!fits)
        failMember(name, std::string("expected ") + expectation + ", found " + describe(value), deserializer);
    return static_cast<T>(source);
}

} // namespace

Deserializer::Deserializer(const std::string& text) : document(std::make_unique<Document>(text)) {}

Deserializer::~Deserializer() = default;

void Deserializer::enterMember(const std::string& key)
{
    const Level& level = document->current();
    const bool isPinnedMember = level.isPinned && level.member.key() == key;
    if (key.empty() && !isPinnedMember) {
        document->inner.push_back({{}, level.value});
        return;
    }
    const key_value_pair member = require(level, key, *this);
    if (!member.value.is_object())
        failMember(key, "expected an object, found " + describe(member.value), *this);
    document->inner.push_back({member.key, member.value});
}

void Deserializer::leaveMember(const std::string& /*key*/)
{
    if (!document->inner.empty())
        document->inner.pop_back();
}

std::vector<std::string> Deserializer::getMemberNames()
{
    std::vector<std::string> names;
    for (const key_value_pair member : membersOf(document->current(), *this))
        names.emplace_back(member.key);
    return names;
}

std::size_t Deserializer::getMemberCount()
{
    const object members = membersOf(document->current(), *this);
    return static_cast<std::size_t>(std::distance(members.begin(), members.end()));
}

void Deserializer::beginMember(std::size_t index)
{
    Level& level = document->current();
    const object members = membersOf(level, *this);
    // The walk goes on from where it stands, so that reading all members in order takes one pass, not one for each.
    if (!level.isWalked || level.index > index) {
        level.member = members.begin();
        level.index = 0;
        level.isWalked = true;
    }
    while (level.index < index && level.member != members.end()) {
        ++level.member;
        ++level.index;
    }
    if (level.member == members.end())
        fail({}, "has no member number " + std::to_string(index));
    level.isPinned = true;
}

void Deserializer::endMember(std::size_t /*index*/)
{
    document->current().isPinned = false;
}

bool Deserializer::hasMember(const std::string& key) const
{
    const Level& level = document->current();
    return find(level, membersOf(level, *this), key).has_value();
}

std::string Deserializer::readString(const std::string& key) const
{
    return read<std::string, std::string_view>(document->current(), key, "a string", *this);
}

unsigned int Deserializer::readUnsigned(const std::string& key) const
{
    return read<unsigned int, std::int64_t>(document->current(), key, "an unsigned 32-bit number", *this);
}

int Deserializer::readInteger(const std::string& key) const
{
    return read<int, std::int64_t>(document->current(), key, "a signed 32-bit number", *this);
}

bool Deserializer::readBoolean(const std::string& key) const
{
    return read<bool, bool>(document->current(), key, "true or false", *this);
}

void Deserializer::fail(const std::string& key, const std::string& problem) const
{
    std::string path;
    const auto append = [&path](std::string_view name) {
        if (name.empty())
            return;
        if (!path.empty())
            path += '.';
        path += excerpt(name);
    };
    for (const Level& level : document->inner) // the root has no name
        append(level.name);
    append(key);
    throw SerialError(path.empty() ? problem : path + ": " + problem);
}

template <>
std::string deserialize<std::string>(const std::string& key, Deserializer& deserializer)
{
    return deserializer.readString(key);
}

template <>
unsigned int deserialize<unsigned int>(const std::string& key, Deserializer& deserializer)
{
    return deserializer.readUnsigned(key);
}

template <>
int deserialize<int>(const std::string& key, Deserializer& deserializer)
{
    return deserializer.readInteger(key);
}

template <>
bool deserialize<bool>(const std::string& key, Deserializer& deserializer)
{
    return deserializer.readBoolean(key);
}

} // namespace Corvane
