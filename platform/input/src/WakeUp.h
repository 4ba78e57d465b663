#pragma once

namespace Corvane
{

/// @return an eventfd that does not block
/// @throws Exception  code 7 when the system refuses it, which is one debug line
int createWakeUp();

} // namespace Corvane
