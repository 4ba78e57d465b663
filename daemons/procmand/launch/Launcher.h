#pragma once

#include "launch/LaunchRequest.h"
#include "launch/OutputFiles.h"
#include "launch/Process.h"

namespace Procmand
{

/// Starts a program as the leader of a process group of its own, with its launch parameters in the environment, nothing
/// to read, and its output in files. Waits until the program runs. Thread-safe.
/// @throws std::system_error  with a text that names the program
Process launch(const LaunchRequest& request, const std::string& token, const OutputFiles& files);

/// Tries to raise this process's limit for nice values, which what it launches inherits: an application that loses the
/// focus goes back from nice 5 to nice 0. One debug line where the system refuses.
void raiseNiceLimit();

} // namespace Procmand
