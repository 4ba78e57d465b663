#include "JsonText.h"

#include "JsonScanner.h"
#include "LargeTexts.h"
#include "SlotPool.h"
#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <new>

namespace Corvane
{

/// A parser with the memory that it works in.
struct JsonText::Reader {
    static constexpr std::size_t SMALLEST_CAPACITY = 1024;
    static constexpr std::size_t LARGEST_KEPT = 64 * 1024;
    // The parser counts the value itself as a level. It does not count an empty object or array, so one of these may
    // stand below the last level.
    static constexpr std::size_t DEPTH_LIMIT = 64 + 1;

    simdjson::error_code parse(std::string_view text, simdjson::dom::element& root);
    simdjson::error_code reserve(std::size_t length);

    void recycle()
    {
        if (keepers == 0)
            shrink();
    }

    void shrink()
    {
        if (parser.capacity() <= LARGEST_KEPT && input.capacity() <= 2 * LARGEST_KEPT)
            return;
        parser = simdjson::dom::parser();
        std::string().swap(input); // an assignment would keep the memory
    }

    simdjson::dom::parser parser;
    std::string input; ///< the text, then the padding that the parser may read

    static std::atomic<int> keepers; ///< LargeTexts that live
    static SlotPool<Reader> pool;
    [[gnu::constructor]] static void fillPool()
    {
        pool.fill();
        // The parser chooses its implementation when it is first asked, and does not survive a lack of memory then.
        simdjson::get_active_implementation()->name();
    }
};

constinit std::atomic<int> JsonText::Reader::keepers{0};
constinit SlotPool<JsonText::Reader> JsonText::Reader::pool;

LargeTexts::LargeTexts()
{
    ++JsonText::Reader::keepers;
}

LargeTexts::~LargeTexts()
{
    if (--JsonText::Reader::keepers == 0)
        JsonText::Reader::pool.visitFree([](JsonText::Reader& reader) { reader.shrink(); });
}

simdjson::error_code JsonText::Reader::reserve(std::size_t wanted)
{
    if (wanted <= parser.capacity())
        return simdjson::SUCCESS;
    const std::size_t capacity = std::bit_ceil(std::max(wanted, SMALLEST_CAPACITY));
    simdjson::error_code error = parser.allocate(capacity, DEPTH_LIMIT);
    if (error == simdjson::SUCCESS)
        error = parser.doc.allocate(capacity);
    // A parser that got part of its memory only is not fit for any further text.
    if (error != simdjson::SUCCESS)
        parser = simdjson::dom::parser();
    return error;
}

simdjson::error_code JsonText::Reader::parse(std::string_view text, simdjson::dom::element& root)
{
    input.assign(text);
    input.append(simdjson::SIMDJSON_PADDING, ' ');
    const simdjson::error_code error = reserve(text.size());
    return error == simdjson::SUCCESS ? parser.parse(input.data(), text.size(), false).get(root) : error;
}

void JsonText::GiveBack::operator()(Reader* reader) const
{
    Reader::pool.giveBack(reader);
}

namespace
{

const char* describe(simdjson::error_code error)
{
    switch (error) {
    case simdjson::EMPTY:
        return "the text is empty";
    case simdjson::UTF8_ERROR:
        return "not valid UTF-8";
    case simdjson::DEPTH_ERROR:
        return "nested deeper than 64 levels";
    case simdjson::NUMBER_ERROR:
        return "a number is malformed or cannot be represented";
    case simdjson::STRING_ERROR:
        return "a string has a malformed escape";
    case simdjson::UNESCAPED_CHARS:
        return "a string has a control character that is not escaped";
    case simdjson::UNCLOSED_STRING:
        return "a string is not closed";
    case simdjson::CAPACITY:
        return "the text is too long for this machine";
    default:
        return "not valid JSON";
    }
}

} // namespace

JsonText::JsonText(std::string_view text) : reader(Reader::pool.claim())
{
    const simdjson::error_code error = reader->parse(text, rootElement);
    if (error == simdjson::SUCCESS)
        return;
    if (error == simdjson::MEMALLOC)
        throw std::bad_alloc();
    if (error == simdjson::DEPTH_ERROR)
        throw NestingError(describe(error));
    if (error == simdjson::NUMBER_ERROR)
        throw NumberError(describe(error));
    // The parser does not tell a second value from a text that is wrong in itself: see whether the first one is right.
    if (error == simdjson::TAPE_ERROR) {
        JsonScanner scanner(text);
        scanner.next();
        const std::string_view first = text.substr(0, text.size() - scanner.getRest().size());
        if (first.size() < text.size() && reader->parse(first, rootElement) == simdjson::SUCCESS)
            throw SerialError("text after the end of the value");
    }
    throw SerialError(describe(error));
}

std::string_view JsonText::RawValues::next()
{
    const char* const begin = text + *++place;
    int depth = 0;
    do {
        const char c = text[*place++];
        depth += static_cast<int>(c == '{' || c == '[') - static_cast<int>(c == '}' || c == ']');
    } while (depth != 0);
    // What comes next is a colon, a comma or the bracket around all: behind white space, perhaps.
    const char* end = text + *place;
    while (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r' || end[-1] == '\n')
        --end;
    return {begin, static_cast<std::size_t>(end - begin)};
}

JsonText::RawValues JsonText::rawValues() const
{
    return {reader->input.data(), reader->parser.implementation->structural_indexes.get()};
}

std::string_view JsonText::rawMember(std::string_view name) const
{
    std::string_view found;
    forEachMember([&](std::string_view key, simdjson::dom::element, std::string_view raw) {
        if (key == name)
            found = raw;
    });
    return found;
}

std::string decodeString(std::string_view raw)
{
    std::string_view value;
    const JsonText text(raw);
    if (text.root().get(value) != simdjson::SUCCESS)
        throw SerialError("expected a string");
    return std::string(value);
}

} // namespace Corvane
