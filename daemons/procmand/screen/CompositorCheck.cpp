#include "screen/CompositorCheck.h"

#include "screen/CompositorDirectFB.h"

#include <cerrno>
#include <corvane/common/FileDescriptor.h>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

pid_t startCheck()
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
    std::string name = "corvane-procmand";
    std::string option = CHECK_OPTION;
    char* words[] = {name.data(), option.data(), nullptr};
    pid_t pid = -1;
    const int failure = posix_spawn(&pid, "/proc/self/exe", &actions, nullptr, words, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::system_error(failure, std::generic_category(), "DirectFB cannot be tried out");
    return pid;
}

[[noreturn]] void tryDirectFB()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit none{0, 0}; // a fault is an answer here
    setrlimit(RLIMIT_CORE, &none);
    int status = EXIT_SUCCESS;
    try {
        openDirectFBScreen(DirectFBTalk::ALL).reset();
        std::cout << "DirectFB starts" << std::endl;
    } catch (const std::exception& error) {
        // At once: a thread of DirectFB may fault while this one writes.
        std::cerr << std::string("corvane-procmand: ") + error.what() + '\n';
        status = EXIT_FAILURE;
    }
    _exit(status);
}

/// @return the status of a process that has ended; none where it was late, and is killed
std::optional<int> awaitEnd(pid_t pid, std::chrono::milliseconds deadline)
{
    const Corvane::FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    pollfd wait{.fd = process.get(), .events = POLLIN, .revents = 0};
    const bool isInTime = poll(&wait, 1, static_cast<int>(deadline.count())) == 1;
    if (!isInTime)
        kill(pid, SIGKILL);
    int status = -1;
    waitpid(pid, &status, 0);
    return isInTime ? std::optional(status) : std::nullopt;
}

/// @return why the trial could not tell itself what came of it; empty where it did
std::string findFault(std::optional<int> status)
{
    if (!status)
        return "it has not answered in time";
    return WIFSIGNALED(*status) ? std::string("it died of SIG") + sigabbrev_np(WTERMSIG(*status)) : std::string();
}

} // namespace

const char* const CHECK_OPTION = "--check-directfb";

void checkDirectFB(std::chrono::milliseconds deadline)
{
    const pid_t pid = fork();
    if (pid == 0)
        tryDirectFB();
    const auto status = pid < 0 ? std::nullopt : awaitEnd(pid, deadline);
    const std::string fault = pid < 0 ? std::strerror(errno) : findFault(status);
    if (fault.empty())
        _exit(WEXITSTATUS(*status));
    std::cerr << "corvane-procmand: DirectFB does not start: " << fault << std::endl;
    _exit(EXIT_FAILURE);
}

void requireDirectFB()
{
    const pid_t pid = startCheck();
    int status = -1;
    if (waitpid(pid, &status, 0) != pid || status != 0)
        throw std::runtime_error(std::string("DirectFB does not start (corvane-procmand ") + CHECK_OPTION +
                                 " tells more)");
}

} // namespace Procmand
