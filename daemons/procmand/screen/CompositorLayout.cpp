#include "screen/CompositorLayout.h"

#include <algorithm>
#include <limits>

namespace Procmand
{

namespace
{

/// Where a window begins and ends along one axis.
struct Range {
    std::int64_t begin;
    std::int64_t end;
};

Range clip(Range range, int size)
{
    return {std::clamp<std::int64_t>(range.begin, 0, size), std::clamp<std::int64_t>(range.end, 0, size)};
}

int narrow(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min() / 2, std::numeric_limits<int>::max() / 2));
}

/// @return the text with a question mark in the place of each character that is no printable ASCII
std::string makeDrawable(const std::string& text)
{
    std::string drawable;
    for (const char byte : text) {
        if (byte >= ' ' && byte <= '~')
            drawable += byte;
        else if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) // the first byte of a character
            drawable += '?';
    }
    return drawable;
}

} // namespace

std::vector<ShownWindow> layOut(const Scene& scene, int screenWidth, int screenHeight)
{
    std::vector<ShownWindow> shown;
    for (const WindowState& window : scene.windows) {
        const std::int64_t x = window.location.getX();
        const std::int64_t y = window.location.getY();
        const std::int64_t width = window.location.getWidth();
        const std::int64_t height = window.location.getHeight();
        const Range columns = clip({x, x + width}, screenWidth);
        const Range rows = clip({y, y + height}, screenHeight);
        if (!window.visibility || window.opacity == 0 || columns.begin == columns.end || rows.begin == rows.end)
            continue;
        shown.push_back({.index = window.index,
                         .uid = window.uid,
                         .label = makeDrawable(window.label),
                         .part = {narrow(columns.begin), narrow(rows.begin), narrow(columns.end - columns.begin),
                                  narrow(rows.end - rows.begin)},
                         .whole = {narrow(x - columns.begin), narrow(y - rows.begin), narrow(width), narrow(height)},
                         .opacity = static_cast<std::uint8_t>(std::min(window.opacity, 255U)),
                         .hasFocus = window.uid == scene.focused});
    }
    return shown;
}

Colour colourOf(const std::string& uid)
{
    // FNV-1a: uids that differ in one letter get colours that differ plainly.
    std::uint32_t hash = 2166136261U;
    for (const char letter : uid)
        hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619U;
    constexpr std::uint32_t DARKEST = 0x30;
    constexpr std::uint32_t SPAN = 0x80;
    const auto shade = [hash](unsigned int shift) {
        return static_cast<std::uint8_t>(DARKEST + (hash >> shift) % SPAN);
    };
    return {shade(24), shade(14), shade(4)};
}

} // namespace Procmand
