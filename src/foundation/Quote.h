#pragma once

#include <string>
#include <string_view>

namespace Corvane
{

/// Appends `text` as a JSON string: in quotes and escaped. What is not UTF-8 (overlong forms, surrogates, values beyond
/// U+10FFFF, sequences cut short) becomes U+FFFD, one for each longest piece that could have begun a character.
void appendQuoted(std::string& output, std::string_view text);

/// @return the beginning of `text` for a message, which must neither grow with what a stranger sends nor end at a NUL:
/// at most 64 bytes and no half character, then "..." where something was cut off; escaped as in a JSON string
std::string excerpt(std::string_view text);

} // namespace Corvane
