#include "CompositorCheck.h"

#include "CompositorDirectFB.h"

#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// How long DirectFB may take to start and to stop.
constexpr std::chrono::milliseconds DEADLINE{10000};

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

} // namespace

const char* const CHECK_OPTION = "--check-directfb";

void checkDirectFB()
{
    // A fault of DirectFB is an answer here. It cannot be caught: its threads block the signal.
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    int status = EXIT_SUCCESS;
    try {
        openDirectFBScreen(DirectFBTalk::ALL).reset();
        std::cout << "DirectFB starts" << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "corvane-procmand: " << error.what() << std::endl;
        status = EXIT_FAILURE;
    }
    _exit(status);
}

void requireDirectFB()
{
    const pid_t pid = startCheck();
    const Corvane::FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    pollfd wait{.fd = process.get(), .events = POLLIN, .revents = 0};
    if (poll(&wait, 1, static_cast<int>(DEADLINE.count())) != 1)
        kill(pid, SIGKILL);
    int status = -1;
    if (waitpid(pid, &status, 0) != pid || status != 0)
        throw std::runtime_error(std::string("DirectFB does not start (corvane-procmand ") + CHECK_OPTION +
                                 " tells more)");
}

} // namespace Procmand
