#pragma once

#include <string>
#include <string_view>

namespace Corvane
{

/// Appends `text` as a JSON string: in quotes and escaped. What is not UTF-8 (overlong forms, surrogates, values beyond
/// U+10FFFF, sequences cut short) becomes U+FFFD, one for each longest piece that could have begun a character.
void appendQuoted(std::string& output, std::string_view text);

/// @return the beginning of `text`, at most 64 bytes and no half character, with "..." where something was cut off;
/// for messages, which must not grow with what a stranger sends
std::string shorten(std::string_view text);

} // namespace Corvane
