#pragma once

#include "screen/Compositor.h"

#include <cstdint>

namespace Procmand
{

/// A rectangle of pixels.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Area&) const = default;
};

/// How a window looks on a screen.
struct ShownWindow {
    unsigned int index = 0;
    std::string uid;
    std::string label; ///< which application that is: ASCII, as every font has it
    Area part;         ///< what of it is on the screen, in the pixels of the screen
    Area whole;        ///< all of it, seen from the upper left corner of `part`
    std::uint8_t opacity = 255;
    bool hasFocus = false;
};

/// @return the windows of the scene that are to be seen, from the back to the front. A window that is hidden, fully
/// transparent or off the screen is left out; of one that reaches beyond the screen there is the part that does not.
std::vector<ShownWindow> layOut(const Scene& scene, int screenWidth, int screenHeight);

/// The colour that stands for an application: of medium brightness, so that a white text can be read on it.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour&) const = default;
};
Colour colourOf(const std::string& uid);

} // namespace Procmand
