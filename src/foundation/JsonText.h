#pragma once

#include <corvane/foundation/SerialError.h>
#include <cstdint>
#include <memory>
#include <simdjson.h>
#include <string>
#include <string_view>

namespace Corvane
{

/// A text that is nested deeper than 64 levels.
class NestingError : public SerialError
{
public:
    using SerialError::SerialError;
};

/// A text with a number that is malformed, or that neither 64 bits nor a double can represent.
class NumberError : public SerialError
{
public:
    using SerialError::SerialError;
};

/// One JSON text, parsed and checked whole: UTF-8, numbers, nesting of at most 64 levels, nothing after its value.
///
/// Parser and memory come from a few that the process keeps ready: a small text allocates nothing. Everything that a
/// JsonText hands out lives as long as it. Not synchronised.
///
///     JsonText text(line);
///     text.forEachMember([](std::string_view name, simdjson::dom::element value, std::string_view raw) { ... });
class JsonText
{
public:
    /// @throws SerialError  with what is wrong with the text; NestingError when that is its depth, NumberError
    /// when it is a number in it; std::bad_alloc
    explicit JsonText(std::string_view text);

    simdjson::dom::element root() const { return rootElement; }

    /// Calls `visit(name, value, raw)` for each member of the text's own object, in the order of the text; `raw` is the
    /// value as it stands there. Nothing is called when the text is no object.
    template <class Visitor>
    void forEachMember(Visitor visit) const
    {
        simdjson::dom::object object;
        if (rootElement.get(object) != simdjson::SUCCESS)
            return;
        RawValues raw = rawValues();
        for (const simdjson::dom::key_value_pair member : object) {
            raw.next();
            visit(member.key, member.value, raw.next());
        }
    }

    /// Calls `visit(value, raw)` for each element of the text's own array, in order. Nothing is called when the text is
    /// no array.
    template <class Visitor>
    void forEachElement(Visitor visit) const
    {
        simdjson::dom::array array;
        if (rootElement.get(array) != simdjson::SUCCESS)
            return;
        RawValues raw = rawValues();
        for (const simdjson::dom::element element : array)
            visit(element, raw.next());
    }

    /// @return the value of the last member `name` of the text's own object as it stands in the text; empty when there
    /// is none
    std::string_view rawMember(std::string_view name) const;

private:
    friend class LargeTexts;
    struct Reader;
    struct GiveBack {
        void operator()(Reader* reader) const;
    };

    /// The values of the text's own object or array as they stand in the text, names of members among them. They are
    /// found by the places of brackets, colons, commas and beginnings of values, which the parser has noted anyway.
    class RawValues
    {
    public:
        RawValues(const char* text, const std::uint32_t* places) : text(text), place(places) {}
        /// @return the next one, without white space around it
        std::string_view next();

    private:
        const char* text;
        const std::uint32_t* place; ///< of the bracket, colon or comma before the next one
    };

    RawValues rawValues() const;

    const std::unique_ptr<Reader, GiveBack> reader;
    simdjson::dom::element rootElement;
};

/// @param raw  a JSON string as it stands in a text, in its quotes
/// @return the string that it means
/// @throws SerialError  it is no JSON string
std::string decodeString(std::string_view raw);

} // namespace Corvane
