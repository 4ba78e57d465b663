#include "Output.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <utility>

namespace Corvanectl
{
namespace
{

/// One character of a text in UTF-8.
struct Letter {
    char32_t code;
    std::size_t size; ///< in bytes
    bool isValid;     ///< otherwise it is one byte that belongs to no character
};

Letter readLetter(std::string_view text)
{
    constexpr std::array<char32_t, 5> LOWEST{0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text.front());
    const Letter broken{.code = first, .size = 1, .isValid = false};
    if (first < 0x80)
        return {.code = first, .size = 1, .isValid = true};
    const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < size)
        return broken;
    char32_t code = first & (0xffU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0U) != 0x80)
            return broken;
        code = code << 6 | (byte & 0x3fU);
    }
    const bool isSurrogate = code >= 0xd800 && code < 0xe000;
    return code < LOWEST[size] || code > 0x10ffff || isSurrogate ? broken : Letter{code, size, true};
}

/// Whether a character commands a terminal, or the order of what stands beside it, instead of being seen.
bool isCommand(const Letter& letter)
{
    constexpr std::array<std::pair<char32_t, char32_t>, 6> COMMANDS{{
        {0, 0x1f},        // C0
        {0x7f, 0x9f},     // DEL and C1: terminals obey these as well
        {0x61c, 0x61c},   // Arabic letter mark
        {0x200e, 0x200f}, // marks of direction
        {0x2028, 0x202e}, // ends of lines and paragraphs; embedding and override of the direction
        {0x2066, 0x2069}, // isolates
    }};
    return !letter.isValid || std::any_of(COMMANDS.begin(), COMMANDS.end(), [&letter](const auto& range) {
        return letter.code >= range.first && letter.code <= range.second;
    });
}

constexpr char DIGITS[] = "0123456789abcdef";

/// The bytes as \xNN each.
std::string writeBytes(std::string_view bytes, const Letter&)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text.append("\\x").append(1, DIGITS[byte >> 4]).append(1, DIGITS[byte & 15]);
    }
    return text;
}

/// The character as JSON writes it; all of them have four digits at most.
std::string writeEscape(std::string_view, const Letter& letter)
{
    if (!letter.isValid)
        return "\\ufffd";
    std::string text = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        text += DIGITS[letter.code >> shift & 15];
    return text;
}

template <class Escape>
std::string replaceCommands(std::string_view text, Escape escape)
{
    std::string result;
    while (!text.empty()) {
        const Letter letter = readLetter(text);
        const std::string_view bytes = text.substr(0, letter.size);
        result += isCommand(letter) ? escape(bytes, letter) : std::string(bytes);
        text.remove_prefix(letter.size);
    }
    return result;
}

} // namespace

std::string writeCompact(const simdjson::dom::element& value)
{
    return simdjson::minify(value);
}

std::string makePrintable(std::string_view text)
{
    return replaceCommands(text, writeBytes);
}

std::string inWords(const simdjson::dom::element& value)
{
    return makePrintable(value.is_string() ? value.get_string().value() : writeCompact(value));
}

std::string textOf(const simdjson::dom::element& object, const char* key)
{
    std::string_view text;
    return object[key].get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

void printLine(const std::string& line)
{
    std::cout << makePrintable(line) << '\n';
}

void printJson(const std::string& json)
{
    std::cout << replaceCommands(json, writeEscape) << '\n';
}

void printTable(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        printLine(line + row.back());
    }
}

void printResult(const std::string& result, bool json)
{
    if (json)
        return printJson(result);
    const JsonText text(result);
    if (text.root.is_null())
        return;
    if (!text.root.is_object())
        return printLine(inWords(text.root));
    std::vector<std::vector<std::string>> rows;
    for (const auto& [key, value] : text.root.get_object())
        rows.push_back({makePrintable(key), inWords(value)});
    printTable(rows);
}

} // namespace Corvanectl
