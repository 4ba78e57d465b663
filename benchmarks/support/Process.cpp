#include "Process.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace Corvane::Benchmark
{

namespace
{

/// @return the value of a line "KEY:  NUMBER kB" of smaps_rollup, 0 where there is none
long readKilobytes(pid_t process, const std::string& key)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(key + ":"))
            return std::stol(line.substr(key.size() + 1));
    return 0;
}

std::filesystem::directory_iterator listThreads(pid_t process)
{
    return std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task");
}

} // namespace

void setScheduling(Scheduling scheduling)
{
    const sched_param parameters{};
    if (sched_setscheduler(0, scheduling == Scheduling::BATCH ? SCHED_BATCH : SCHED_OTHER, &parameters) != 0)
        throw std::runtime_error("the system does not let the scheduling be set");
}

void stayOnOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<unsigned int>(sched_getcpu()), &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0)
        throw std::runtime_error("cannot stay on one core");
}

void execute(const std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, stream);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

Process::Process(const std::function<void()>& run) : id(fork())
{
    if (id < 0)
        throw std::runtime_error("cannot start a process");
    if (id != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    run();
    _exit(1);
}

Process::Process(const std::vector<std::string>& words) : Process([&words] { execute(words); }) {}

pid_t Process::release()
{
    return std::exchange(id, 0);
}

Process::Process(Process&& other) noexcept : id(other.release()) {}

Process::~Process()
{
    if (id <= 0)
        return;
    kill(id, SIGKILL);
    waitpid(id, nullptr, 0);
}

RuntimeFolder::RuntimeFolder()
{
    char name[] = "/tmp/corvane-XXXXXX";
    if (mkdtemp(name) == nullptr)
        throw std::runtime_error("cannot create a folder");
    path = name;
    setenv("CORVANE_RUNTIME_DIR", name, 1);
    setenv("CORVANE_DEBUG_LEVEL", "1", 1);
}

RuntimeFolder::~RuntimeFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

long readPrivateMemory(pid_t process)
{
    return readKilobytes(process, "Private_Dirty");
}

long readProportionalMemory(pid_t process)
{
    return readKilobytes(process, "Pss");
}

std::chrono::nanoseconds readProcessorTime(pid_t process)
{
    std::chrono::nanoseconds::rep total = 0;
    for (const auto& thread : listThreads(process)) {
        std::chrono::nanoseconds::rep used = 0;
        std::ifstream(thread.path() / "schedstat") >> used;
        total += used;
    }
    return std::chrono::nanoseconds(total);
}

int countThreads(pid_t process)
{
    return static_cast<int>(std::distance(listThreads(process), std::filesystem::directory_iterator()));
}

} // namespace Corvane::Benchmark
