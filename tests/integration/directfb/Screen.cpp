#include "Screen.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

namespace Corvane::Test
{

namespace
{

IDirectFB* theDirectFB = nullptr;
IDirectFBDisplayLayer* theLayer = nullptr;

/// Ends the program: of tests that find no screen, gtest would say that they were skipped.
void require(DFBResult result, const char* call)
{
    if (result == DFB_OK)
        return;
    std::fprintf(stderr, "%s: %s\n", call, DirectFBErrorString(result));
    std::exit(EXIT_FAILURE);
}

class Environment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        setenv("DFBARGS",
               "system=dummy,no-banner,quiet,no-sighandler,disable-module=linux_input,mode=640x480,pixelformat=ARGB",
               0);
        require(DirectFBInit(nullptr, nullptr), "DirectFBInit");
        require(DirectFBCreate(&theDirectFB), "DirectFBCreate");
        require(theDirectFB->GetDisplayLayer(theDirectFB, DLID_PRIMARY, &theLayer), "GetDisplayLayer");
        require(theLayer->SetCooperativeLevel(theLayer, DLSCL_ADMINISTRATIVE), "SetCooperativeLevel");
        require(theLayer->SetBackgroundColor(theLayer, 0x20, 0x40, 0x60, 0xFF), "SetBackgroundColor");
        require(theLayer->SetBackgroundMode(theLayer, DLBM_COLOR), "SetBackgroundMode");
        require(theLayer->EnableCursor(theLayer, 1), "EnableCursor");
    }

    void TearDown() override
    {
        if (theLayer != nullptr)
            theLayer->Release(theLayer);
        if (theDirectFB != nullptr)
            theDirectFB->Release(theDirectFB);
    }
};

[[maybe_unused]] const auto* const environment = ::testing::AddGlobalTestEnvironment(new Environment);

} // namespace

IDirectFB* Screen::dfb()
{
    return theDirectFB;
}

IDirectFBDisplayLayer* Screen::layer()
{
    return theLayer;
}

Picture Screen::read()
{
    Picture picture{WIDTH, HEIGHT, std::vector<std::uint32_t>(std::size_t{WIDTH} * HEIGHT)};
    IDirectFBSurface* surface = nullptr;
    EXPECT_EQ(theLayer->GetSurface(theLayer, &surface), DFB_OK);
    DFBSurfacePixelFormat format{};
    EXPECT_EQ(surface->GetPixelFormat(surface, &format), DFB_OK);
    EXPECT_EQ(format, DSPF_ARGB) << "the pixels are taken as they are";
    const DFBRectangle_C whole{0, 0, WIDTH, HEIGHT};
    EXPECT_EQ(surface->Read(surface, &whole, picture.pixels.data(), WIDTH * 4), DFB_OK);
    surface->Release(surface);
    return picture;
}

} // namespace Corvane::Test
