#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

/// To be called first by a handler that announces a fatal signal: puts the signal off where it has interrupted its own
/// thread inside a section of the library that the announcement would wait for. It is raised again at the end of the
/// section.
///
/// The fault of an instruction cannot be put off: the instruction is tried again when the handler returns, and raises
/// the same signal once more. That one is not put off, and what it interrupted keeps its lock: the control servers
/// announce nothing then.
///
///     if (deferSignal(signal))
///         return;
///
/// @return true when the handler is to return at once
/// Signal-safe.
CORVANE_EXPORT bool deferSignal(int signal);

} // namespace Corvane
