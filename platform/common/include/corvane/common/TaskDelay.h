#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

/// Suspends the calling thread for at least `milliseconds`, signals notwithstanding. Thread-safe; blocks.
CORVANE_EXPORT void OS_TaskDelayMsec(unsigned int milliseconds);

} // namespace Corvane
