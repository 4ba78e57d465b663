#pragma once

#include <Process.h>
#include <atomic>
#include <string>

namespace Corvane::Benchmark
{

/// What a window did.
struct Counts {
    double instructions = 0;
    double systemCalls = 0;
    double allocations = 0;

    Counts operator-(const Counts& other) const;
    Counts operator/(int count) const;
};

/// A window under callgrind, which counts its instructions and system calls, of all threads.
class InstructionCounter
{
public:
    explicit InstructionCounter(const RuntimeFolder& folder);

    void begin();
    Counts end();

private:
    const std::string output; ///< what callgrind writes, with a number for each time that it is asked to
    const std::string log;    ///< of valgrind, with all system calls
    const Process process;
    int dumps = 0;
    double systemCalls = 0; ///< at the beginning
};

/// A window whose allocations are counted.
class AllocationCounter
{
public:
    explicit AllocationCounter(const RuntimeFolder& folder);
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    void begin();
    Counts end() const;

private:
    using Number = std::atomic<unsigned long>;

    const std::string path;
    Number* const number; ///< in a file that the window has mapped as well
    const Process process;
    unsigned long before = 0;
};

} // namespace Corvane::Benchmark
