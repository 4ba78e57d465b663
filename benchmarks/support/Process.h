#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Corvane::Benchmark
{

enum class Scheduling { DEFAULT, BATCH };

/// Sets how this process is scheduled, and the children that it starts from now on. Under BATCH a process that is woken
/// does not take the processor away from the one that woke it; otherwise it is the scheduler that is measured.
void setScheduling(Scheduling scheduling);

/// Keeps this process, and the children that it starts from now on, on one core.
void stayOnOneCore();

/// Becomes another program, which prints into nothing.
/// @param words  its path, and its arguments
[[noreturn]] void execute(const std::vector<std::string>& words);

/// A child process, killed when this goes.
class Process
{
public:
    /// @param run  what the child does; it does not return
    explicit Process(const std::function<void()>& run);
    /// Runs a program that prints into nothing.
    /// @param words  its path, and its arguments
    explicit Process(const std::vector<std::string>& words);
    Process(Process&& other) noexcept;
    Process& operator=(Process&&) = delete;
    ~Process();

    pid_t getId() const { return id; }
    /// Gives the process away, which the caller is to end.
    pid_t release();

private:
    pid_t id;
};

/// A folder for sockets, of this process and its children, whose logs have errors only; gone with its contents when
/// this goes.
class RuntimeFolder
{
public:
    RuntimeFolder();
    ~RuntimeFolder();
    RuntimeFolder(const RuntimeFolder&) = delete;
    RuntimeFolder& operator=(const RuntimeFolder&) = delete;

    const std::string& getPath() const { return path; }

private:
    std::string path;
};

/// @return what a process has written to and shares with nobody, in kilobytes
long readPrivateMemory(pid_t process);
/// @return its share of what it has in memory, in kilobytes
long readProportionalMemory(pid_t process);
/// @return the time that all threads of a process have used a processor, those that have ended not counted
std::chrono::nanoseconds readProcessorTime(pid_t process);
int countThreads(pid_t process);

} // namespace Corvane::Benchmark
