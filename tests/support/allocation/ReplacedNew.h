#pragma once

namespace Corvane::Test
{

/// Asked before each operator new of a program with ReplacedNew.cpp, in all its libraries and threads. The program
/// defines it.
/// @return false: the allocation fails
bool mayAllocate() noexcept;

} // namespace Corvane::Test
