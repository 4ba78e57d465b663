#include "launch/Starter.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

constexpr int CHANNEL = STDERR_FILENO + 1;

/// Blocks all signals of this thread: none of this process's handlers may run in the new one.
class SignalBlock
{
public:
    SignalBlock()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    sigset_t before{};
};

// What follows runs in the new process, where only the forking thread is left: signal-safe functions only.

/// The signals of a fresh program, whatever the process manager does with its own.
void resetSignals()
{
    for (int signal = 1; signal < NSIG; ++signal)
        ::signal(signal, SIG_DFL);
}

/// Gives up what is root's. The user comes last: before that the rest is allowed.
bool becomeUser(const StartPlan& plan)
{
    if (!plan.user)
        return true;
    const uid_t id = plan.user->id;
    const gid_t group = plan.user->group;
    return setgroups(plan.groups.size(), plan.groups.data()) == 0 && setresgid(group, group, group) == 0 &&
           setresuid(id, id, id) == 0;
}

/// @return whether the process has nothing open but its three streams and the channel
bool arrangeDescriptors(const StartPlan& plan, int channel)
{
    // Out of the way of each other first.
    const auto lift = [](int descriptor) { return fcntl(descriptor, F_DUPFD_CLOEXEC, CHANNEL + 1); };
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int lifted[] = {lift(input), lift(plan.output.get()), lift(plan.error.get()), lift(channel)};
    const int folder = lift(plan.folder.get());
    for (int target = STDIN_FILENO; target < CHANNEL; ++target)
        if (dup2(lifted[target], target) < 0)
            return false;
    if (dup3(lifted[CHANNEL], CHANNEL, O_CLOEXEC) < 0 || fchdir(folder) != 0)
        return false;
    // Not every library that the process manager uses keeps its descriptors to itself.
    closefrom(CHANNEL + 1);
    return true;
}

/// @return why none of the paths is a program that can be run
int execute(const StartPlan& plan)
{
    int reason = ENOENT;
    for (const std::string& path : plan.paths) {
        execve(path.c_str(), plan.arguments.get(), plan.environment.get());
        if (errno != ENOENT && errno != ENOTDIR && errno != EACCES)
            return errno;
        if (errno == EACCES)
            reason = EACCES;
    }
    return reason;
}

int becomeProgram(const StartPlan& plan)
{
    setpgid(0, 0);
    resetSignals();
    char word{};
    if (recv(CHANNEL, &word, 1, 0) != 1)
        return ECANCELED;
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    return execute(plan);
}

[[noreturn]] void runNewProcess(const StartPlan& plan, int channel)
{
    // Soon: should the process manager be killed, its successor needs what it has open. As the new user, who may not be
    // allowed to enter the folder.
    const bool isReady = becomeUser(plan) && arrangeDescriptors(plan, channel);
    const int reason = isReady ? becomeProgram(plan) : errno;
    send(isReady ? CHANNEL : channel, &reason, sizeof reason, MSG_NOSIGNAL);
    _exit(EXIT_FAILURE);
}

} // namespace

PointerList::PointerList(std::vector<std::string> list) : texts(std::move(list))
{
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
}

Starter::Starter(const StartPlan& plan)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category());
    channel.reset(ends[0]);
    const Corvane::FileDescriptor other(ends[1]);
    const SignalBlock block;
    pid = fork();
    if (pid < 0)
        throw std::system_error(errno, std::generic_category());
    if (pid == 0)
        runNewProcess(plan, other.get());
}

Starter::~Starter()
{
    if (!channel.isOpen())
        return;
    channel.reset();
    reap();
}

int Starter::run()
{
    const char word = 1;
    send(channel.get(), &word, 1, MSG_NOSIGNAL);
    int reason = 0;
    ssize_t size = 0;
    // The channel is closed by the start of the program.
    while ((size = recv(channel.get(), &reason, sizeof reason, MSG_WAITALL)) < 0 && errno == EINTR)
        ;
    channel.reset();
    if (size != sizeof reason)
        return 0;
    reap();
    return reason;
}

void Starter::reap()
{
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR)
        ;
}

} // namespace Procmand
