#pragma once

#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <corvane/foundation/ReturnCode.h>
#include <string>

/// The result codes, the exception that carries them, their texts, and the debug print: what every source file needs
/// that reports a failure.
namespace Corvane
{

/// The texts of the result codes 0 to 5, then the text of every other value.
///
/// Each source file that includes this header has a copy of its own, built before its other static objects: a failure
/// while a program is still being started finds its text. All copies are equal; nothing may rely on their addresses.
static const std::string RETURN_CODE_TEXTS[] = {"Success",       "Invalid parameter", "Invalid state",  "Out of memory",
                                                "Not supported", "Timed out",         "Generic failure"};

} // namespace Corvane
