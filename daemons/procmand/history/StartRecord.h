#pragma once

#include "launch/LaunchRequest.h"
#include "screen/Placement.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace Procmand
{

/// An application with the process that it has or had last, as the history keeps it for a process manager that is
/// started anew.
struct StartRecord {
    static constexpr char STARTING[] = "starting"; ///< no process has run the program yet
    static constexpr char RUNNING[] = "running";
    static constexpr char WAITING[] = "waiting";
    static constexpr char GIVEN_UP[] = "given-up";

    std::string time;
    std::string boot; ///< of the machine: process ids begin anew with it
    std::string uid;
    pid_t pid = 0;
    std::string startTime; ///< of the process, in the system's unit
    std::string mark;      ///< of the run, empty for an application that was started by hand
    std::string program;
    std::string type; ///< its application type
    std::string phase = RUNNING;
    unsigned int restarts = 0;
    unsigned int restartsInRow = 0;
    std::optional<Placement> placement;   ///< for its next process
    std::optional<LaunchRequest> request; ///< none for an application that was started by hand

    std::string write() const;
    /// @throws SerialError  the text is no such record
    static StartRecord read(const std::string& text);
};

/// @return what names the present boot of the machine
std::string readBoot();

} // namespace Procmand
