#pragma once

#include <corvane/foundation/SerialError.h>
#include <string>

namespace Corvane::Test
{

/// Runs `read` and returns the text of the SerialError that it throws; "(no error)" when it throws none.
template <class Read>
std::string problemOf(Read read)
{
    try {
        read();
    } catch (const SerialError& error) {
        return error.what();
    }
    return "(no error)";
}

} // namespace Corvane::Test
