#include "Picture.h"

#include <fstream>
#include <iterator>
#include <png.h>
#include <stdexcept>

namespace Corvane::Test
{

namespace
{

// The order of bytes in memory of pixels 0xAARRGGBB.
constexpr png_uint_32 FORMAT = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;

png_image emptyImage()
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    return image;
}

} // namespace

Picture readPicture(const std::string& path)
{
    png_image image = emptyImage();
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0)
        throw std::runtime_error(path + ": " + image.message);
    image.format = FORMAT;
    Picture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    picture.pixels.resize(std::size_t{image.width} * image.height);
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error(path + ": " + image.message);
    return picture;
}

void writePicture(const std::string& path, const Picture& picture)
{
    png_image image = emptyImage();
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = FORMAT;
    if (png_image_write_to_file(&image, path.c_str(), 0, picture.pixels.data(), 0, nullptr) == 0)
        throw std::runtime_error(path + ": " + image.message);
}

std::string readBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error(path + ": cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, const std::string& bytes)
{
    if (!(std::ofstream(path, std::ios::binary) << bytes))
        throw std::runtime_error(path + ": cannot be written");
}

} // namespace Corvane::Test
