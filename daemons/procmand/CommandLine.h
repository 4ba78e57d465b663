#pragma once

#include "box/Settings.h"

#include <optional>

namespace Procmand
{

/// Reads the command line.
/// @param exitCode  what the program ends with when there is nothing to run
/// @return none when help was asked for, or a word was wrong; it has been told to the user then
std::optional<Settings> readCommandLine(int argc, char** argv, int& exitCode);

} // namespace Procmand
