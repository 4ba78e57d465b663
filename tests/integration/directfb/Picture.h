#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// A picture of pixels 0xAARRGGBB, not premultiplied, row by row.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

/// Reads and writes PNG files. @throws std::runtime_error  with the reason
Picture readPicture(const std::string& path);
void writePicture(const std::string& path, const Picture& picture);

/// The bytes of any file, and the other way round.
std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);

} // namespace Corvane::Test
