#pragma once

#include <chrono>
#include <string>

namespace Procmand
{

/// What the command line decides. The defaults are those of a box.
struct Settings {
    using Duration = std::chrono::milliseconds;

    /// The history file and what applications print are kept here.
    std::string stateFolder = "/var/lib/corvane";
    /// Silence after which an application with a control server counts as run away.
    Duration keepAliveDeadline{15000};
    /// How long an application may take to answer a call.
    Duration callDeadline{5000};
    /// How long a stopping application may take: after it was asked to terminate, after SIGTERM, after SIGKILL.
    Duration terminateDeadline{10000};
    Duration termDeadline{5000};
    Duration killDeadline{5000};
    /// How long an application may live on that has announced that it aborts.
    Duration abortDeadline{2000};
    /// The delay before the first restart; each further one is twice as long, up to the longest.
    Duration restartDelay{1000};
    Duration restartDelayLimit{60000};
    /// How many restarts in a row are made; an application that ran longer than `stableTime` begins a new row.
    unsigned int restartLimit = 5;
    Duration stableTime{60000};
    /// How many windows there are.
    unsigned int windowLimit = 256;
    /// How many of them one application may have.
    unsigned int clientWindowLimit = 16;
    /// Says who may do what.
    std::string policyFile = "/etc/corvane/policy.json";
    /// Where the windows are shown: one of `listCompositors()`. The command line prefers its first.
    std::string compositor = "memory";
    /// Whether the applications are stopped with the process manager, or left running.
    bool stopsApplications = false;
};

} // namespace Procmand
