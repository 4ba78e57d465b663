#pragma once

#include "Picture.h"
#include <directfb.h>

namespace Corvane::Test
{

/// The one DirectFB of this process, made before the first test and released after the last: DirectFB does not stand
/// being made and released again and again. Its layer is plain and shows the pointer.
///
/// DFBARGS chooses the system; without it DirectFB draws into memory only.
class Screen
{
public:
    static constexpr int WIDTH = 640;
    static constexpr int HEIGHT = 480;
    static constexpr std::uint32_t BACKGROUND = 0xFF204060;

    static IDirectFB* dfb();
    static IDirectFBDisplayLayer* layer();

    /// What the layer shows now.
    static Picture read();
};

} // namespace Corvane::Test
