#pragma once

#include <filesystem>

namespace Corvane::Test
{

/// @param folder  of a process or a thread: /proc/PID, /proc/PID/task/TID
/// @return the letter of its state as proc(5) has it: S for asleep, T for stopped, Z for a zombie; NUL when it is gone
char readTaskState(const std::filesystem::path& folder);

} // namespace Corvane::Test
