#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

/// Importance of a debug line, most important first. Levels between the named ones may be used.
enum DebugLevel : int { DEBUG_ERROR = 1, DEBUG_WARNING = 3, DEBUG_INFO = 5, DEBUG_NOTICE = 7 };

/// Writes one line of diagnostics: time, process, level, module, component, source line and the formatted message.
///
/// The line goes out in one piece of at most 4,096 bytes, so that lines of several threads, of several
/// processes that share the output, and of a signal handler never mix. A final line feed in the format is optional;
/// other control characters are written as `\xNN`. Lines above CORVANE_DEBUG_LEVEL (default 7) are dropped;
/// CORVANE_DEBUG_OUTPUT is `stderr` (default), `syslog` or the path of a file to append to. Both are read once, when
/// the library is loaded.
///
/// Thread-safe and signal-safe (no lock, no allocation, `errno` is kept) as long as the format has no floating-point or
/// wide-character conversion. Never fails: what cannot be written is lost. Waits for a reader of a full pipe or socket
/// for 100 ms at most; how many lines were lost so, is the first line that gets through again.
/// @param module     the module's tag, not null
/// @param component  the tag of the class or function, not null
/// @param line       source line of the call
CORVANE_EXPORT void corvaneDebugPrint(DebugLevel level, const char* module, const char* component, int line,
                                      const char* format, ...) __attribute__((format(printf, 5, 6)));

/// Gives the process the name that its debug lines carry from now on (until then: the name of its program).
/// @param name  copied, cut after 31 bytes; null and "" are ignored
/// Main thread only, before threads are started.
CORVANE_EXPORT void debugInitialize(const char* name);

} // namespace Corvane
