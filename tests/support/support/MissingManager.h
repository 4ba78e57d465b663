#pragma once

#include <string>

namespace Corvane::Test
{

/// What an application wrote to standard error, but for the one line which says that there is no process manager to
/// register with. Fails the test when that line is not there exactly once.
std::string withoutMissingManager(const std::string& error);

} // namespace Corvane::Test
