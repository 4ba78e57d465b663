#pragma once

#include <csignal>

namespace Corvane::Test
{

/// Lets the calling thread get a signal in the middle of the next message that it sends.
void strikeNextSend(int signal);

/// Lets the calling thread make a fault there: of SIGSEGV, SIGBUS, SIGILL, or SIGABRT for a call of abort().
void faultInNextSend(int signal);

/// Makes a fault of the calling thread; returns where the signal is none of those.
void fault(int signal);

} // namespace Corvane::Test
