#pragma once

#include "launch/Process.h"

#include <string>

namespace Procmand
{

/// How an application ended, as the history keeps it.
struct EndRecord {
    std::string time; ///< of the end, in UTC: "2026-03-01T12:00:00.250Z"
    std::string uid;
    pid_t pid = 0;
    std::string program;
    std::string name; ///< what people called it, empty for none
    ProcessEnd end;
    std::string state;         ///< the last one that was heard of
    std::string previousState; ///< the one before it
    bool ranAway = false;
    bool wasStopped = false; ///< somebody asked for the end
    unsigned int restarts = 0;
    std::string standardOutput; ///< its last bytes
    std::string standardError;  ///< its last bytes

    std::string write() const;
};

/// @return the present time in the form of the records
std::string tellTime();

} // namespace Procmand
