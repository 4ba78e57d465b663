#pragma once

namespace Corvane::Test
{

/// @return the descriptor of an empty file in memory, which takes what several threads or processes write at once:
/// everything is appended. The caller closes it. @throws std::runtime_error
int createMemoryFile(const char* name);

} // namespace Corvane::Test
