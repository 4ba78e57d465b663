#include "Output.h"

#include <algorithm>
#include <iostream>

namespace Corvanectl
{

std::string writeCompact(const simdjson::dom::element& value)
{
    return simdjson::minify(value);
}

std::string makePrintable(std::string_view text)
{
    static const char DIGITS[] = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f)
            result += c;
        else
            result.append("\\x").append(1, DIGITS[byte >> 4]).append(1, DIGITS[byte & 15]);
    }
    return result;
}

std::string inWords(const simdjson::dom::element& value)
{
    return value.is_string() ? makePrintable(value.get_string().value()) : writeCompact(value);
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
