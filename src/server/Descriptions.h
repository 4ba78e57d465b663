#pragma once

#include <corvane/common/RPCDescription.h>

namespace Corvane
{

/// What the control server of a window tells about itself.
extern const RPCServerDescription WINDOW_SERVER_DESCRIPTION;
/// What the control server of a service tells about itself.
extern const RPCServerDescription SERVICE_SERVER_DESCRIPTION;

} // namespace Corvane
