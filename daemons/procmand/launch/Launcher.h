#pragma once

#include "launch/LaunchRequest.h"
#include "launch/OutputFiles.h"
#include "launch/Starter.h"

namespace Procmand
{

/// Plans the start of a program with its launch parameters in the environment, nothing to read, and its output in
/// files. Thread-safe.
/// @param mark  of this run, see Remains.h
/// @throws std::system_error  it cannot be started like that
StartPlan planLaunch(const LaunchRequest& request, const std::string& token, const std::string& mark,
                     const OutputFiles& files);

/// Tries to raise this process's limit for nice values, which what it launches inherits: an application that loses the
/// focus goes back from nice 5 to nice 0. One debug line where the system refuses.
void raiseNiceLimit();

} // namespace Procmand
