#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Procmand
{

/// How much one application may have to say. What it says is counted in turns of 200 ms.
///
/// Past a limit its changes of properties are merged: of each only the last one counts, and comes at the end of the
/// turn. Its changes of state and of the focus are passed on, each of them; past a further limit nothing more is read
/// in this turn, and what the application says waits in its own process. So neither the memory nor the time that it
/// takes here grows with what it says.
class Pace
{
public:
    using Clock = std::chrono::steady_clock;
    using Notification = std::pair<std::string, std::string>; ///< name and payload

    static constexpr std::chrono::milliseconds TURN{200};
    /// What is passed on in a turn without merging.
    static constexpr unsigned int PASS_LIMIT = 200;
    /// Changes of state and of the focus that are passed on in a turn.
    static constexpr unsigned int STATE_LIMIT = 2 * PASS_LIMIT;
    /// What is read in a turn.
    static constexpr unsigned int READ_LIMIT = 5000;
    /// So many properties are told apart while they are merged. An application that has more, loses the oldest.
    static constexpr std::size_t MERGE_LIMIT = 32;

    /// Begins a turn, if the last one is over by now.
    void update(Clock::time_point now);
    /// Begins a turn. @return what was merged in the last one
    std::vector<Notification> renew(Clock::time_point now);
    /// @return whether nothing more is to be read in this turn
    bool isSpent() const { return read >= READ_LIMIT || passed >= STATE_LIMIT; }
    /// Counts a notification. @return whether it is to be passed on now; else it has been merged
    bool count(std::string& name, std::string& payload);
    /// @return whether the limit was passed in this turn
    bool isExceeded() const { return passed > PASS_LIMIT || !merged.empty() || isSpent(); }
    /// @return how many notifications another one has taken the place of, in all
    unsigned long countReplaced() const { return replaced; }

private:
    void merge(std::string& name, std::string& payload);

    Clock::time_point begin{};
    unsigned int read = 0;
    unsigned int passed = 0;
    std::vector<Notification> merged; ///< the oldest first
    unsigned long replaced = 0;
};

} // namespace Procmand
