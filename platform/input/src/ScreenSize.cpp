#include "ScreenSize.h"

#include <charconv>
#include <corvane/foundation/DebugPrint.h>
#include <cstdlib>
#include <string_view>

namespace Corvane
{

namespace
{

constexpr const char* VARIABLE = "CORVANE_SCREEN_SIZE";
constexpr unsigned int WIDTH = 1280;
constexpr unsigned int HEIGHT = 720;
constexpr unsigned int LIMIT = 65535;

/// Takes a number from 1 to LIMIT off the text. @return 0 when there is none
unsigned int takeNumber(std::string_view& text)
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number > LIMIT)
        return 0;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

} // namespace

ISurfaceCompositing::Dimensions readScreenSize()
{
    const char* const value = std::getenv(VARIABLE);
    if (value == nullptr)
        return {WIDTH, HEIGHT};
    std::string_view text(value);
    const unsigned int width = takeNumber(text);
    const bool isSeparated = text.starts_with('x');
    text.remove_prefix(isSeparated ? 1 : 0);
    const unsigned int height = takeNumber(text);
    if (width != 0 && height != 0 && isSeparated && text.empty())
        return {width, height};
    corvaneDebugPrint(DEBUG_WARNING, "MultiInputDriver", "ScreenSize", __LINE__,
                      "%s is \"%s\", and not a size such as 1920x1080: the screen is taken for %ux%u\n", VARIABLE,
                      value, WIDTH, HEIGHT);
    return {WIDTH, HEIGHT};
}

} // namespace Corvane
