#pragma once

#include <string>

namespace Corvane::Test
{

/// The table of result texts as another source file than the test sees it: seven texts.
const std::string* textTableOfAnotherFile();

} // namespace Corvane::Test
