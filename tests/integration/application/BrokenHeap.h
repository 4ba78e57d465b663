#pragma once

namespace Corvane::Test
{

/// Sends this process a signal from inside malloc. The calling thread never gets memory again: whatever it asks the
/// heap for waits forever, as it does when a fault hits a thread that holds the heap's lock.
void raiseInsideMalloc(int signal);

} // namespace Corvane::Test
