#pragma once

#include <string>

namespace Procmand
{

/// @return a new authorization token that nobody can guess: 128 bits from the system, as 32 hexadecimal digits
std::string makeToken();

} // namespace Procmand
