#pragma once

#include <simdjson.h>
#include <string>
#include <string_view>
#include <vector>

/// What the commands print.
namespace Corvanectl
{

/// A JSON text that was read; `root` lives as long as it does.
class JsonText
{
    simdjson::dom::parser parser;

public:
    /// @throws simdjson::simdjson_error  it is no JSON text
    explicit JsonText(const std::string& text) : root(parser.parse(text)) {}

    const simdjson::dom::element root;
};

/// @return the value as JSON text on one line, without blanks
std::string writeCompact(const simdjson::dom::element& value);

/// @return the text with \xNN for each byte of what commands a terminal instead of being seen: control characters,
/// those
///         that change the direction of writing, and what is no UTF-8
std::string makePrintable(std::string_view text);

/// @return a string as it is, any other value as JSON text
std::string inWords(const simdjson::dom::element& value);

/// @return the member that is a text, as it is; empty for any other and for none
std::string textOf(const simdjson::dom::element& object, const char* key);

/// Prints one line, printable as above: whoever has had a hand in it cannot drive the terminal.
void printLine(const std::string& line);

/// Prints a JSON text as one line; the same characters are \uNNNN in it.
void printJson(const std::string& json);

/// Prints rows of cells, the columns aligned.
void printTable(const std::vector<std::vector<std::string>>& rows);

/// Prints the result of a call: as it is with `json`, else a table for an object, nothing for null, words for others.
void printResult(const std::string& result, bool json);

} // namespace Corvanectl
