#pragma once

#include <corvane/Foundation.h>
#include <exception>

namespace Corvane
{

/// Tells the listeners of an application where no exception may go further. What one of them throws is one debug line;
/// as everywhere, those after it are not told then.
/// @param function, line  of the caller, for that line
template <class Call>
void contain(const char* function, int line, Call tellListeners) noexcept
{
    constexpr const char* TAG = "Application";
    const auto log = [&](const char* problem) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, "%s(): caught exception: %s\n", function, problem);
    };
    try {
        tellListeners();
    } catch (const Exception& exception) {
        log(exception.what());
    } catch (const std::exception& exception) {
        log(exception.what());
    } catch (...) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, "%s(): caught unknown exception\n", function);
    }
}

} // namespace Corvane
