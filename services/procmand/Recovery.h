#pragma once

#include "StartRecord.h"
#include "WindowStack.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace Procmand
{

/// What the history tells of the box as it was.
struct Recovery {
    struct Application {
        StartRecord start;
        bool hasEnded = false; ///< and is to be started again
    };

    std::map<std::string, Application> applications; ///< by uid
    std::vector<WindowState> windows;                ///< from the back to the front
    std::deque<std::string> ends;                    ///< the last records of ends, as they stand in the file

    /// Records that cannot be read are left out.
    static Recovery read(const std::vector<std::string>& records);
};

/// How many ends are remembered.
constexpr std::size_t REMEMBERED_ENDS = 100;

/// The record of all windows in their order.
std::string writeWindowsRecord(const std::vector<WindowState>& windows);
/// The record of an application for which nothing more is done.
std::string writeGoneRecord(const std::string& uid);

} // namespace Procmand
