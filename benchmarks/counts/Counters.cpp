#include "Counters.h"

#include "Servers.h"

#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Benchmark
{

namespace
{

constexpr const char* ALLOCATION_COUNT = "CORVANE_ALLOCATION_COUNT";

void control(const char* request, pid_t process)
{
    const Process command(std::vector<std::string>{CALLGRIND_CONTROL, request, std::to_string(process)});
    int status = 0;
    if (waitpid(command.getId(), &status, 0) < 0 || status != 0)
        throw std::runtime_error("callgrind_control fails");
}

std::vector<std::string> describeValgrind(const std::string& output, const std::string& log)
{
    std::vector<std::string> words{VALGRIND, "--tool=callgrind", "--callgrind-out-file=" + output,
                                   "--trace-syscalls=yes", "--log-file=" + log};
    for (std::string& word : describeWindowServer())
        words.push_back(std::move(word));
    return words;
}

/// Reads the line "totals: 11320" of what callgrind writes.
double readInstructions(const std::string& path)
{
    constexpr std::string_view TOTALS = "totals:";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(TOTALS))
            return std::stod(line.substr(TOTALS.size()));
    throw std::runtime_error("callgrind has written no totals to " + path);
}

/// Counts the lines "SYSCALL[PID,THREAD](NUMBER) sys_recvfrom ( ..." of valgrind's log, and not those that tell how a
/// call ended that had to wait.
double countSystemCalls(const std::string& path)
{
    double count = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("SYSCALL[") && line.find(") ... [") == std::string::npos)
            ++count;
    return count;
}

void* mapNewFile(const std::string& path, std::size_t size)
{
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const bool isSized = file >= 0 && ftruncate(file, static_cast<off_t>(size)) == 0;
    void* const memory = isSized ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
    close(file);
    if (memory == MAP_FAILED)
        throw std::runtime_error("cannot map " + path);
    return memory;
}

} // namespace

Counts Counts::operator-(const Counts& other) const
{
    return {instructions - other.instructions, systemCalls - other.systemCalls, allocations - other.allocations};
}

Counts Counts::operator/(int count) const
{
    return {instructions / count, systemCalls / count, allocations / count};
}

InstructionCounter::InstructionCounter(const RuntimeFolder& folder)
    : output(folder.getPath() + "/callgrind"), log(folder.getPath() + "/log"), process(describeValgrind(output, log))
{
}

void InstructionCounter::begin()
{
    control("--zero", process.getId());
    systemCalls = countSystemCalls(log);
}

Counts InstructionCounter::end()
{
    const double after = countSystemCalls(log);
    control("--dump", process.getId());
    return {.instructions = readInstructions(output + "." + std::to_string(++dumps)),
            .systemCalls = after - systemCalls};
}

AllocationCounter::AllocationCounter(const RuntimeFolder& folder)
    : path(folder.getPath() + "/allocations"),
      number(new (mapNewFile(path, sizeof(Number))) Number(0)),
      process([this] {
          setenv(ALLOCATION_COUNT, path.c_str(), 1);
          setenv("LD_PRELOAD", COUNT_ALLOCATIONS, 1);
          execute(describeWindowServer());
      })
{
}

AllocationCounter::~AllocationCounter()
{
    munmap(number, sizeof(Number));
}

void AllocationCounter::begin()
{
    before = *number;
}

Counts AllocationCounter::end() const
{
    return {.allocations = static_cast<double>(*number - before)};
}

} // namespace Corvane::Benchmark
