#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <sys/types.h>

namespace Procmand
{

/// What one client may take, so that something is left for others. Not synchronised.
class Quotas
{
public:
    using Clock = std::chrono::steady_clock;

    /// How many applications one process may register.
    static constexpr std::size_t REGISTRATIONS = 16;
    /// How many launches one user may ask for in a minute.
    static constexpr std::size_t LAUNCHES_A_MINUTE = 60;
    /// How many moves of the focus may wait.
    static constexpr std::size_t FOCUS_MOVES = 64;

    /// Counts a launch. @throws std::runtime_error  that is one too many
    void countLaunch(uid_t user, Clock::time_point now = Clock::now());

private:
    std::map<uid_t, std::deque<Clock::time_point>> launches; ///< of the last minute
};

} // namespace Procmand
