#include <corvane/foundation/Serializer.h>

#include "Quote.h"
#include "SlotPool.h"
#include <charconv>
#include <cstddef>
#include <new>

namespace Corvane
{

/// The text that is being written, and the brackets that are open in it.
struct Serializer::Buffer {
    // Enough for the announcement of a death from a state of the longest text, each of its 255 bytes escaped.
    static constexpr std::size_t READY_SIZE = 2048;
    static constexpr std::size_t LARGEST_KEPT = 64 * 1024;

    Buffer() { text.reserve(READY_SIZE); }

    void recycle() noexcept
    {
        if (text.capacity() > LARGEST_KEPT)
            shrink();
        text.clear();
        nesting.clear();
    }

    void shrink() noexcept
    try {
        *this = Buffer();
    } catch (const std::bad_alloc&) {
        // Where there is no memory for a small one, the large one stays.
    }

    std::string text;
    std::string nesting;

    static SlotPool<Buffer> pool;
    [[gnu::constructor]] static void fillPool() { pool.fill(); }
};

constinit SlotPool<Serializer::Buffer> Serializer::Buffer::pool;

namespace
{

template <class Integer>
void appendNumber(std::string& text, Integer value)
{
    char digits[12];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
}

} // namespace

Serializer::Serializer() : buffer(Buffer::pool.claim()) {}

Serializer::~Serializer()
{
    Buffer::pool.giveBack(buffer);
}

void Serializer::beginValue(std::string_view key)
{
    std::string& text = buffer->text;
    const bool isFirst = text.empty() || text.back() == '{' || text.back() == '[';
    if (!isFirst)
        text += ',';
    // Inside an object the empty key is a name like any other, or the text would be no JSON.
    const bool isMember = !buffer->nesting.empty() && buffer->nesting.back() == '{';
    if (key.empty() && !isMember)
        return;
    appendQuoted(text, key);
    text += ':';
}

void Serializer::begin(std::string_view key, char bracket)
{
    beginValue(key);
    buffer->text += bracket;
    buffer->nesting += bracket;
}

void Serializer::end(char bracket)
{
    buffer->text += bracket;
    if (!buffer->nesting.empty())
        buffer->nesting.pop_back();
}

void Serializer::beginObject(const std::string& key)
{
    begin(key, '{');
}

void Serializer::endObject(const std::string& /*key*/)
{
    end('}');
}

void Serializer::beginArray(const std::string& key)
{
    begin(key, '[');
}

void Serializer::endArray(const std::string& /*key*/)
{
    end(']');
}

void Serializer::writeString(std::string_view key, std::string_view value)
{
    beginValue(key);
    appendQuoted(buffer->text, value);
}

void Serializer::writeUnsigned(std::string_view key, unsigned int value)
{
    beginValue(key);
    appendNumber(buffer->text, value);
}

void Serializer::writeInteger(std::string_view key, int value)
{
    beginValue(key);
    appendNumber(buffer->text, value);
}

void Serializer::writeBoolean(std::string_view key, bool value)
{
    writeJson(key, value ? "true" : "false");
}

void Serializer::writeNull(std::string_view key)
{
    writeJson(key, "null");
}

void Serializer::writeJson(std::string_view key, std::string_view json)
{
    beginValue(key);
    buffer->text.append(json);
}

const std::string& Serializer::generate() const
{
    return buffer->text;
}

void serialize(const std::string& key, const std::string& value, Serializer& serializer)
{
    serializer.writeString(key, value);
}

void serialize(const std::string& key, const char* value, Serializer& serializer)
{
    serializer.writeString(key, value);
}

void serialize(const std::string& key, unsigned int value, Serializer& serializer)
{
    serializer.writeUnsigned(key, value);
}

void serialize(const std::string& key, int value, Serializer& serializer)
{
    serializer.writeInteger(key, value);
}

void serialize(const std::string& key, bool value, Serializer& serializer)
{
    serializer.writeBoolean(key, value);
}

} // namespace Corvane
