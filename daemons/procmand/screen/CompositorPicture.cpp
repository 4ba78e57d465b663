#include "screen/CompositorPicture.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <png.h>
#include <stdexcept>
#include <system_error>

namespace Procmand
{

namespace
{

/// A new file, never what somebody has put there. @throws std::runtime_error
FILE* create(const std::string& file)
{
    constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const int descriptor = ::open(file.c_str(), FLAGS, 0640);
    FILE* const stream = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
    if (stream == nullptr)
        throw std::runtime_error(file + " cannot be written: " + std::generic_category().message(errno));
    return stream;
}

} // namespace

void Picture::save(const std::string& file)
{
    for (std::uint32_t& pixel : pixels)
        pixel |= 0xFF000000U;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    // The order of bytes in memory.
    image.format = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
    const std::string part = file + ".part";
    FILE* const stream = create(part);
    std::string problem;
    if (png_image_write_to_stdio(&image, stream, 0, pixels.data(), 0, nullptr) == 0)
        problem = image.message;
    const bool isClosed = std::fclose(stream) == 0;
    if (problem.empty() && (!isClosed || std::rename(part.c_str(), file.c_str()) != 0))
        problem = std::generic_category().message(errno);
    if (problem.empty())
        return;
    std::remove(part.c_str());
    throw std::runtime_error(file + " cannot be written: " + problem);
}

} // namespace Procmand
