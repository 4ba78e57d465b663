#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/syscall.h>

namespace Corvane::Test
{

/// What the system says of a thread of this process in a file of this name; "" when there is no such thread.
inline std::string readThreadFile(const std::string& thread, const std::string& name)
{
    const auto read = [](const std::filesystem::path& path) {
        // Of a thread that ends meanwhile the system has no more to say, which is no error here.
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    };
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
        if (read(task.path() / "comm") == thread + "\n")
            return read(task.path() / name);
    return "";
}

/// How often a thread of this process went to sleep.
inline std::string countThreadSleeps(const std::string& thread)
{
    const std::string status = readThreadFile(thread, "status");
    const std::size_t at = status.find("\nvoluntary_ctxt_switches:");
    return at != std::string::npos ? status.substr(at + 1, status.find('\n', at + 1) - at - 1) : "";
}

/// Whether a thread of this process sleeps until a descriptor wakes it, however long that takes. It is not enough that
/// it sleeps: it may just wait for a lock or for memory.
inline bool isThreadAsleep(const std::string& thread)
{
    std::istringstream call(readThreadFile(thread, "syscall"));
    long number = 0;
    std::string descriptor, events, count, timeout;
    call >> number >> descriptor >> events >> count >> timeout;
    return (number == SYS_epoll_wait || number == SYS_epoll_pwait) && timeout.ends_with("ffffffff");
}

/// The same for the input driver's threads, the one that calls and the one that reads on meanwhile.
inline std::string countDriverSleeps()
{
    return countThreadSleeps("InputDriver") + ", " + countThreadSleeps("InputReader");
}
inline bool isDriverAsleep()
{
    return isThreadAsleep("InputDriver") && isThreadAsleep("InputReader");
}

} // namespace Corvane::Test
