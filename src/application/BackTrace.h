#pragma once

namespace Corvane
{

/// Loads what a back trace needs, for which the loader asks the heap: the handler of a fault must not, for it may have
/// interrupted the heap. Not for signal handlers.
void prepareBackTrace();

/// Prints where this thread is, at most ten frames, on standard output. For the handler of a fatal signal.
///
/// The text of the frames is made in the heap's memory, and where the fault hit a thread that holds the heap's lock,
/// that waits for ever. After half a second the frames are printed without the heap; after another half, with a
/// standard output that nobody reads, they are not. Both times `end` is called then, within a signal handler of any
/// thread that lets SIGALRM through, and it is to end the process.
/// @param signal  for `end`
void printBackTrace(int signal, void (*end)(int signal));

} // namespace Corvane
