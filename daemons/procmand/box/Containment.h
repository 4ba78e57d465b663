#pragma once

#include <chrono>
#include <corvane/foundation/DebugPrint.h>
#include <exception>
#include <new>
#include <thread>

namespace Procmand
{

/// Carries out a step of a thread that must go on whatever happens: what the step throws is one line in the log.
/// @param tag  whose step it is
template <class Step>
void contain(const char* tag, const Step& step) noexcept
{
    const auto log = [tag](const char* problem) {
        Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", tag, __LINE__, "a step was given up: %s\n",
                                   problem);
    };
    try {
        step();
    } catch (const std::exception& error) {
        log(error.what());
    } catch (...) {
        log("unknown");
    }
}

/// Carries out a step that must not be given up for lack of memory: it is tried until there is some. For threads that
/// may wait.
template <class Step>
void insist(const Step& step)
{
    for (;;)
        try {
            return step();
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
}

} // namespace Procmand
