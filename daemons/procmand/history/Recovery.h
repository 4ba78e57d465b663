#pragma once

#include "history/StartRecord.h"
#include "screen/WindowStack.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace Procmand
{

/// Something that has happened to an application: how it ended, or that it was given up.
struct PastRecord {
    std::string uid;
    std::string text; ///< as it stands in the file
};

/// How many of them are remembered.
constexpr std::size_t PAST_LIMIT = 100;

/// What the history tells of the box as it was.
struct Recovery {
    struct Application {
        StartRecord start;
        bool hasEnded = false; ///< and is to be started again
    };

    std::map<std::string, Application> applications; ///< by uid
    std::vector<WindowState> windows;                ///< from the back to the front
    std::deque<PastRecord> past;                     ///< the last ones

    /// Records that cannot be read are left out.
    static Recovery read(const std::vector<std::string>& records);
};

/// The record of all windows in their order.
std::string writeWindowsRecord(const std::vector<WindowState>& windows);
/// The record of an application for which nothing more is done.
std::string writeGoneRecord(const std::string& uid);
/// The record of an application that is not started again by itself any more.
std::string writeGivenUpRecord(const std::string& uid, const std::string& program, unsigned int restartsInRow);

} // namespace Procmand
