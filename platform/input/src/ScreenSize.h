#pragma once

#include <corvane/interfaces/ISurfaceCompositing.h>

namespace Corvane
{

/// The size of the screen that absolute pointers point at, in pixels: the environment variable CORVANE_SCREEN_SIZE, as
/// in "1920x1080". Without it, and with one debug line when it is something else, 1280x720.
ISurfaceCompositing::Dimensions readScreenSize();

} // namespace Corvane
