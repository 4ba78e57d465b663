#include "Screen.h"

#include <cstdio>
#include <png.h>
#include <stdexcept>

void require(DFBResult result, const char* call)
{
    if (result != DFB_OK)
        throw std::runtime_error(std::string(call) + ": " + DirectFBErrorString(result));
}

Screen::Screen(int* argc, char*** argv)
{
    require(DirectFBInit(argc, argv), "DirectFBInit");
    // Corvane handles the signals of the process; DirectFB would block them.
    require(DirectFBSetOption("no-sighandler", nullptr), "DirectFBSetOption");
    IDirectFB* createdDirectFB = nullptr;
    require(DirectFBCreate(&createdDirectFB), "DirectFBCreate");
    dfb.reset(createdDirectFB);
    IDirectFBDisplayLayer* primaryLayer = nullptr;
    require(dfb->GetDisplayLayer(dfb.get(), DLID_PRIMARY, &primaryLayer), "GetDisplayLayer");
    layer.reset(primaryLayer);
    require(layer->SetCooperativeLevel(layer.get(), DLSCL_ADMINISTRATIVE), "SetCooperativeLevel");
    require(layer->SetBackgroundColor(layer.get(), 0x10, 0x18, 0x20, 0xFF), "SetBackgroundColor");
    require(layer->SetBackgroundMode(layer.get(), DLBM_COLOR), "SetBackgroundMode");
}

Screen::Pixels Screen::read() const
{
    IDirectFBSurface* created = nullptr;
    require(layer->GetSurface(layer.get(), &created), "GetSurface");
    const Owned<IDirectFBSurface> shown(created);

    // A copy in a format that PNG has, whatever the layer's is.
    DFBSurfaceDescription description{};
    require(shown->GetSize(shown.get(), &description.width, &description.height), "GetSize");
    description.flags = static_cast<DFBSurfaceDescriptionFlags>(DSDESC_WIDTH | DSDESC_HEIGHT | DSDESC_PIXELFORMAT);
    description.pixelformat = DSPF_ARGB;
    require(dfb->CreateSurface(dfb.get(), &description, &created), "CreateSurface");
    const Owned<IDirectFBSurface> copy(created);
    require(copy->Blit(copy.get(), shown.get(), nullptr, 0, 0), "Blit");

    Pixels pixels{description.width, description.height, {}};
    pixels.values.resize(static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height));
    const DFBRectangle_C whole{0, 0, pixels.width, pixels.height};
    require(copy->Read(copy.get(), &whole, pixels.values.data(), pixels.width * 4), "Read");
    for (std::uint32_t& pixel : pixels.values)
        pixel |= 0xFF000000U; // a screen is not transparent
    return pixels;
}

void Screen::save(const std::string& path) const
{
    const Pixels pixels = read();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(pixels.width);
    image.height = static_cast<png_uint_32>(pixels.height);
    image.format = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
    const std::string part = path + ".part";
    if (png_image_write_to_file(&image, part.c_str(), 0, pixels.values.data(), 0, nullptr) == 0)
        throw std::runtime_error(part + ": " + image.message);
    if (std::rename(part.c_str(), path.c_str()) != 0)
        throw std::runtime_error(path + ": cannot be written");
}
