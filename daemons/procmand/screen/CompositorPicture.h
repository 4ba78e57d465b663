#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Procmand
{

/// A picture of pixels 0xAARRGGBB, row by row. What they say of transparency does not count: a screen has none.
struct Picture {
    Picture(int width, int height)
        : width(width), height(height), pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    {
    }

    /// Writes a PNG file. Whoever opens it finds a whole picture, the old one or the new one.
    /// @throws std::runtime_error  with the reason
    void save(const std::string& file);

    int width;
    int height;
    std::vector<std::uint32_t> pixels;
};

} // namespace Procmand
