#include "launch/UserSpawn.h"

#include <cerrno>
#include <corvane/common/FileDescriptor.h>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Procmand
{

namespace
{

using Corvane::FileDescriptor;

/// Where the new process tells why it did not come to its program; closed by the program's start.
constexpr int REPORT = STDERR_FILENO + 1;

/// Gives up what is root's. The user comes last: before that the rest is allowed.
bool becomeUser(const User& user, const std::vector<gid_t>& groups)
{
    return setgroups(groups.size(), groups.data()) == 0 && setresgid(user.group, user.group, user.group) == 0 &&
           setresuid(user.id, user.id, user.id) == 0;
}

bool arrangeFiles(const SpawnPlan& plan, int report)
{
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input < 0 || dup2(input, STDIN_FILENO) < 0 || dup2(plan.output, STDOUT_FILENO) < 0 ||
        dup2(plan.error, STDERR_FILENO) < 0 || fchdir(plan.folder) != 0 || dup2(report, REPORT) < 0)
        return false;
    closefrom(REPORT + 1);
    return fcntl(REPORT, F_SETFD, FD_CLOEXEC) == 0;
}

void resetSignals()
{
    for (int signal = 1; signal < NSIG; ++signal)
        ::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// The new process until its program runs. Only what is allowed after a fork of a process with threads.
[[noreturn]] void runProgram(const User& user, const std::vector<gid_t>& groups, const SpawnPlan& plan, int report)
{
    resetSignals();
    // The folder is entered by the new user, who may not be allowed to.
    if (setpgid(0, 0) == 0 && becomeUser(user, groups) && arrangeFiles(plan, report)) {
        report = REPORT;
        execvpe(plan.program, plan.arguments, plan.environment);
    }
    const int failure = errno;
    const bool isTold = write(report, &failure, sizeof failure) == sizeof failure;
    _exit(isTold ? 127 : 126);
}

/// @return what the new process reported; 0 when its program runs
int awaitStart(const FileDescriptor& reports)
{
    int failure = 0;
    ssize_t size = 0;
    do {
        size = read(reports.get(), &failure, sizeof failure);
    } while (size < 0 && errno == EINTR);
    return size == sizeof failure ? failure : 0;
}

} // namespace

int spawnAs(const User& user, const SpawnPlan& plan, pid_t& pid)
{
    const std::vector<gid_t> groups = user.findGroups();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    const FileDescriptor reports(ends[0]);
    FileDescriptor report(ends[1]);
    // A signal that comes before the new process has its own actions must not run those of this one.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    const int reason = errno;
    if (child == 0)
        runProgram(user, groups, plan, report.get());
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (child < 0)
        return reason;
    report.reset();
    const int failure = awaitStart(reports);
    if (failure != 0)
        waitpid(child, nullptr, 0);
    else
        pid = child;
    return failure;
}

} // namespace Procmand
