#pragma once

namespace Corvane
{

/// The character that a key of a keyboard with the US layout gives: printing ASCII characters and the blank.
/// @param code  a KEY_ code of Linux
/// @return 0 for a key without a character
unsigned char findCharacter(unsigned int code, bool shifted, bool capsLocked);

} // namespace Corvane
