#pragma once

#include "access/Caller.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>

namespace Procmand
{

/// Who did what, and who was refused what: a line in the log each, and the latest ones in memory. Not synchronised.
class Audit
{
public:
    /// One thing that somebody did or wanted to do.
    struct Deed {
        std::string method;
        std::string subject;    ///< uid or program that it is about, empty for none
        std::string problem;    ///< why it was not done, empty where it was
        bool isRefused = false; ///< the caller may not do that
    };

    /// How many deeds are kept, and apart from them how many refusals: who is refused cannot drive out what was done.
    static constexpr std::size_t LIMIT = 256;
    /// How many refusals are logged in a second; the next line tells how many were left out.
    static constexpr unsigned int REFUSALS_A_SECOND = 10;

    void note(const Caller& caller, const Deed& deed);
    /// @param limit  of records
    /// @return the latest ones in their order, as the text of a JSON array
    std::string write(std::size_t limit) const;

private:
    using Clock = std::chrono::steady_clock;

    struct Record {
        std::uint64_t number;
        std::string text;
    };

    void logRefusal(const std::string& text);

    std::deque<Record> deeds;
    std::deque<Record> refusals;
    std::uint64_t lastNumber = 0;
    Clock::time_point second{}; ///< when the refusals of the present second began
    unsigned int loggedRefusals = 0;
    unsigned int silentRefusals = 0;
};

} // namespace Procmand
