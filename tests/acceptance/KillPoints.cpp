/// A library that is loaded before all others into the process manager and kills it at one point of its work, named by
/// CORVANE_TEST_KILL_AT: "before fork 1", "after record 2". The points are the calls of the system that the process
/// manager, or what it has forked, starts a program with; they are counted by their names.

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

enum Point { RECORD, FORK, WORD, EXEC, POINT_COUNT };
constexpr const char* NAMES[POINT_COUNT] = {"record", "fork", "word", "exec"};

pid_t manager = 0;
const char* killAt = "";
std::atomic<unsigned int>* counts = nullptr; ///< shared with what is forked

__attribute__((constructor)) void prepare()
{
    if (const char* const text = std::getenv("CORVANE_TEST_KILL_AT"))
        killAt = text;
    manager = getpid();
    void* const memory = mmap(nullptr, sizeof(std::atomic<unsigned int>) * POINT_COUNT, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    counts = new (memory) std::atomic<unsigned int>[POINT_COUNT] {};
    unsetenv("LD_PRELOAD"); // not for the applications
}

/// Does not return in the process manager if this is where it is to die; what it has forked goes on when it is dead.
void reach(const char* when, Point point, unsigned int count)
{
    char name[32];
    std::strcpy(name, when);
    std::strcat(name, NAMES[point]);
    const std::size_t length = std::strlen(name);
    name[length] = ' ';
    name[length + 1] = static_cast<char>('0' + count);
    name[length + 2] = '\0';
    if (count > 9 || std::strcmp(killAt, name) != 0)
        return;
    kill(manager, SIGKILL);
    while (getpid() == manager || getppid() == manager)
        usleep(1000);
}

template <class Function>
auto around(Point point, Function call)
{
    const unsigned int count = ++counts[point];
    reach("before ", point, count);
    const auto result = call();
    if (getpid() == manager)
        reach("after ", point, count);
    return result;
}

template <class Function>
Function* find(const char* name, Function*)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) ssize_t write(int descriptor, const void* data, size_t size)
{
    static auto* const real = find("write", &write);
    const std::string_view text(static_cast<const char*>(data), size);
    if (text.find(R"("uid":"faithful")") == text.npos)
        return real(descriptor, data, size);
    return around(RECORD, [&] { return real(descriptor, data, size); });
}

__attribute__((visibility("default"))) pid_t fork()
{
    static auto* const real = find("fork", &fork);
    return around(FORK, [] { return real(); });
}

__attribute__((visibility("default"))) ssize_t send(int descriptor, const void* data, size_t size, int flags)
{
    static auto* const real = find("send", &send);
    if (size != 1)
        return real(descriptor, data, size, flags);
    return around(WORD, [&] { return real(descriptor, data, size, flags); });
}

__attribute__((visibility("default"))) int execve(const char* path, char* const* arguments, char* const* environment)
{
    static auto* const real = find("execve", &execve);
    return around(EXEC, [&] { return real(path, arguments, environment); });
}
}
