#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Corvane::Benchmark
{

/// What a program was told on its command line.
struct Options {
    bool isQuick = false;           ///< a few rounds only: the figures show that the program works, no more
    std::vector<std::string> words; ///< what is no option

    /// @return how many rounds to take: `rounds`, or few of them for a quick run
    int rounds(int rounds) const { return isQuick ? 3 : rounds; }
};

/// What a figure should be.
struct Goal {
    enum class Of { NOTHING, VALUE, RATIO };

    Of of = Of::NOTHING;
    double limit = 0;
    bool isAtLeast = false; ///< otherwise the limit is what it may be at most

    static Goal valueAtMost(double limit) { return {Of::VALUE, limit, false}; }
    static Goal ratioAtMost(double limit) { return {Of::RATIO, limit, false}; }
    static Goal ratioAtLeast(double limit) { return {Of::RATIO, limit, true}; }
};

/// One line of a program's table.
struct Figure {
    std::string name;
    double value = 0;
    std::string unit;
    double reference = 0; ///< the same of what it is compared with, in the same unit; 0 where there is none
    double ratio = 0;     ///< 0 where there is no reference
    Goal goal{};
};

/// Reads the command line, puts this process and its children under SCHED_BATCH, measures and prints a table, or one
/// line of JSON (--json). What `measure` throws is printed.
/// @param help  what is measured, for --help
/// @return the exit status of the program
int runBenchmark(int argc, char** argv, const std::string& help,
                 const std::function<std::vector<Figure>(const Options&)>& measure);

} // namespace Corvane::Benchmark
