#include "KeyRepeat.h"

#include <charconv>
#include <corvane/foundation/DebugPrint.h>
#include <cstdlib>
#include <string_view>

namespace Corvane
{

namespace
{

constexpr const char* REPEAT_VARIABLE = "CORVANE_KEY_REPEAT";
constexpr unsigned int LONGEST = 10000;

/// @return the whole text as a number from 1 to LONGEST; 0 when it is none
unsigned int readNumber(std::string_view text)
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && number <= LONGEST;
    return isNumber ? number : 0;
}

} // namespace

std::optional<KeyRepeat> readKeyRepeat()
{
    const char* const value = std::getenv(REPEAT_VARIABLE);
    if (value == nullptr)
        return {};
    const std::string_view text(value);
    if (text == "off")
        return KeyRepeat{0, 0};
    if (const std::size_t comma = text.find(','); comma != std::string_view::npos) {
        const KeyRepeat repeat{readNumber(text.substr(0, comma)), readNumber(text.substr(comma + 1))};
        if (repeat.delay != 0 && repeat.period != 0)
            return repeat;
    }
    corvaneDebugPrint(DEBUG_WARNING, "MultiInputDriver", "KeyRepeat", __LINE__,
                      "%s is \"%s\", and neither \"off\" nor a delay and a period in milliseconds such as 400,40: keys "
                      "repeat as the kernel lets them\n",
                      REPEAT_VARIABLE, value);
    return {};
}

} // namespace Corvane
