#include "Output.h"

#include <algorithm>
#include <iostream>

namespace Corvanectl
{
namespace
{

/// @return how many bytes the control character has that the text begins with; 0: there is none
std::size_t measureControl(std::string_view text)
{
    if (static_cast<unsigned char>(text.front()) < 0x20 || text.front() == 0x7f)
        return 1;
    // U+0080 to U+009F in UTF-8: terminals obey these as well.
    return text.size() > 1 && text[0] == '\xc2' && static_cast<unsigned char>(text[1]) < 0xa0 ? 2 : 0;
}

} // namespace

std::string writeCompact(const simdjson::dom::element& value)
{
    return simdjson::minify(value);
}

std::string makePrintable(std::string_view text)
{
    static const char DIGITS[] = "0123456789abcdef";
    std::string result;
    std::size_t controls = 0; // bytes from here on that are a control character
    for (; !text.empty(); text.remove_prefix(1)) {
        const auto byte = static_cast<unsigned char>(text.front());
        controls = std::max(controls, measureControl(text));
        if (controls == 0) {
            result += text.front();
            continue;
        }
        --controls;
        result.append("\\x").append(1, DIGITS[byte >> 4]).append(1, DIGITS[byte & 15]);
    }
    return result;
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
    std::cout << line << '\n';
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
        return printLine(result);
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
