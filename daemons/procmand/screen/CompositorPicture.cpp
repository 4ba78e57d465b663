#include "screen/CompositorPicture.h"

#include <cstdio>
#include <png.h>
#include <stdexcept>
#include <system_error>

namespace Procmand
{

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
    if (png_image_write_to_file(&image, part.c_str(), 0, pixels.data(), 0, nullptr) == 0) {
        std::remove(part.c_str());
        throw std::runtime_error(part + " cannot be written: " + image.message);
    }
    if (std::rename(part.c_str(), file.c_str()) != 0)
        throw std::system_error(errno, std::generic_category(), file + " cannot be written");
}

} // namespace Procmand
