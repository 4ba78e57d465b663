#pragma once

#include "screen/CompositorThread.h"

namespace Procmand
{

/// What DirectFB itself may print.
enum class DirectFBTalk { NONE, ALL };

/// Opens the primary layer of DirectFB, on whatever system DirectFB finds or DFBARGS names, and draws each window as a
/// window of DirectFB: a plain colour that stands for the application, name, type, program and uid as text where
/// DirectFB's font is installed, and a frame around the one with the focus.
///
/// DirectFB can be started once in a process.
/// @throws std::runtime_error  DirectFB does not start
std::unique_ptr<IScreen> openDirectFBScreen(DirectFBTalk talk);

} // namespace Procmand
