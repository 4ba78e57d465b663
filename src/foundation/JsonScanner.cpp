#include "JsonScanner.h"
#include <cstddef>

namespace Corvane
{

namespace
{

/// @return the index behind the string whose opening quote is at `begin`
std::size_t endOfString(std::string_view text, std::size_t begin)
{
    for (std::size_t i = begin + 1; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '"')
            return i + 1;
    }
    return text.size();
}

/// @return the index behind the object or array that begins the text
std::size_t endOfContainer(std::string_view text)
{
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        if (c == '"') {
            i = endOfString(text, i);
            continue;
        }
        ++i;
        if (c == '{' || c == '[')
            ++depth;
        else if ((c == '}' || c == ']') && --depth == 0)
            return i;
    }
    return text.size();
}

std::size_t endOfValue(std::string_view text)
{
    if (text.empty())
        return 0;
    if (text.front() == '"')
        return endOfString(text, 0);
    if (text.front() == '{' || text.front() == '[')
        return endOfContainer(text);
    const std::size_t end = text.find_first_of(" \t\r\n,:{}[]\"", 1);
    return end == std::string_view::npos ? text.size() : end;
}

} // namespace

void JsonScanner::enter()
{
    skipSeparators();
    if (!rest.empty())
        rest.remove_prefix(1);
}

std::string_view JsonScanner::next()
{
    skipSeparators();
    const std::string_view value = rest.substr(0, endOfValue(rest));
    rest.remove_prefix(value.size());
    return value;
}

void JsonScanner::skipSeparators()
{
    // A loop of its own: find_first_not_of costs a call of memchr for each byte.
    while (!rest.empty() && (rest.front() == ',' || rest.front() == ':' || rest.front() == ' ' ||
                             rest.front() == '\n' || rest.front() == '\r' || rest.front() == '\t'))
        rest.remove_prefix(1);
}

} // namespace Corvane
