#include "Screen.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace Corvane::Test
{

namespace
{

IDirectFB* theDirectFB = nullptr;
IDirectFBDisplayLayer* theLayer = nullptr;

class Environment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        setenv("DFBARGS",
               "system=dummy,no-banner,quiet,no-sighandler,disable-module=linux_input,mode=640x480,pixelformat=ARGB",
               0);
        ASSERT_EQ(DirectFBInit(nullptr, nullptr), DFB_OK);
        ASSERT_EQ(DirectFBCreate(&theDirectFB), DFB_OK);
        ASSERT_EQ(theDirectFB->GetDisplayLayer(theDirectFB, DLID_PRIMARY, &theLayer), DFB_OK);
        ASSERT_EQ(theLayer->SetCooperativeLevel(theLayer, DLSCL_ADMINISTRATIVE), DFB_OK);
        ASSERT_EQ(theLayer->SetBackgroundColor(theLayer, 0x20, 0x40, 0x60, 0xFF), DFB_OK);
        ASSERT_EQ(theLayer->SetBackgroundMode(theLayer, DLBM_COLOR), DFB_OK);
        ASSERT_EQ(theLayer->EnableCursor(theLayer, 1), DFB_OK);
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
