#include "Quote.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Corvane
{

namespace
{

constexpr std::string_view REPLACEMENT_CHARACTER = "\xEF\xBF\xBD";

struct Sequence {
    std::size_t length;
    bool isCharacter;
};

unsigned char byteAt(std::string_view text, std::size_t index)
{
    return static_cast<unsigned char>(text[index]);
}

/// How many bytes of the multi-byte sequence at the beginning of `text` belong together, and whether they are a
/// character.
Sequence measureSequence(std::string_view text)
{
    const unsigned char lead = byteAt(text, 0);
    if (lead < 0xC2 || lead > 0xF4)
        return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte's range is narrower after four of the leads: that excludes overlong forms, surrogates and what
    // lies beyond U+10FFFF.
    unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size() || byteAt(text, i) < lowest || byteAt(text, i) > highest)
            return {i, false};
        lowest = 0x80;
        highest = 0xBF;
    }
    return {length, true};
}

/// Which bytes stand in a JSON string as they are.
constexpr auto IS_PLAIN = [] {
    std::array<bool, 256> isPlain{};
    for (std::size_t byte = 0x20; byte < 0x80; ++byte)
        isPlain[byte] = byte != '"' && byte != '\\';
    return isPlain;
}();

void appendEscaped(std::string& output, unsigned char byte)
{
    static constexpr std::string_view SHORT_FORMS = "\"\"\\\\\bb\ff\nn\rr\tt";
    static constexpr char HEX[] = "0123456789abcdef";
    for (std::size_t i = 0; i < SHORT_FORMS.size(); i += 2) {
        if (byteAt(SHORT_FORMS, i) == byte) {
            output += '\\';
            output += SHORT_FORMS[i + 1];
            return;
        }
    }
    output.append("\\u00");
    output += HEX[byte >> 4];
    output += HEX[byte & 0xF];
}

} // namespace

void appendQuoted(std::string& output, std::string_view text)
{
    output += '"';
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size() && IS_PLAIN[byteAt(text, length)])
            ++length;
        if (length != 0) {
            output.append(text.substr(0, length));
        } else if (byteAt(text, 0) < 0x80) {
            appendEscaped(output, byteAt(text, 0));
            length = 1;
        } else {
            const Sequence sequence = measureSequence(text);
            output.append(sequence.isCharacter ? text.substr(0, sequence.length) : REPLACEMENT_CHARACTER);
            length = sequence.length;
        }
        text.remove_prefix(length);
    }
    output += '"';
}

std::string excerpt(std::string_view text)
{
    constexpr std::size_t LONGEST = 64;
    std::size_t length = std::min(text.size(), LONGEST);
    while (length > 0 && length < text.size() && (byteAt(text, length) & 0xC0) == 0x80)
        --length;
    std::string quoted;
    appendQuoted(quoted, text.substr(0, length));
    return quoted.substr(1, quoted.size() - 2) + (length < text.size() ? "..." : "");
}

} // namespace Corvane
