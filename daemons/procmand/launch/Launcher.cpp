#include "launch/Launcher.h"

#include "launch/UserSpawn.h"

#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

constexpr char PARAMETERS[] = "CORVANE_APP_PARAMETERS";

/// Texts in the form that the system takes them. The pointers lead into the texts.
class PointerList
{
public:
    explicit PointerList(std::vector<std::string> list) : texts(std::move(list))
    {
        for (std::string& text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
    }
    char** get() { return pointers.data(); }

private:
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};

PointerList makeArguments(const LaunchRequest& request)
{
    std::vector<std::string> arguments{request.program};
    arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
    return PointerList(std::move(arguments));
}

/// Makes the process manager's variables those of another user. What leads the loader somewhere is not passed on.
void giveTo(const User& user, std::map<std::string, std::string>& variables)
{
    std::erase_if(variables, [](const auto& variable) { return variable.first.starts_with("LD_"); });
    // The folder of the sockets is the process manager's all the same.
    if (const auto folder = variables.find("XDG_RUNTIME_DIR"); folder != variables.end())
        variables.emplace("CORVANE_RUNTIME_DIR", folder->second + "/corvane");
    variables.erase("XDG_RUNTIME_DIR");
    variables["HOME"] = user.home;
    variables["SHELL"] = user.shell;
    variables["USER"] = variables["LOGNAME"] = user.name;
}

PointerList makeEnvironment(const LaunchRequest& request, const std::string& token, const std::optional<User>& user)
{
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (const std::string text = *entry; text.find('=') != text.npos)
            variables[text.substr(0, text.find('='))] = text.substr(text.find('=') + 1);
    // The supervision of the process manager itself is no business of what it launches.
    for (const char* own : {"NOTIFY_SOCKET", "WATCHDOG_PID", "WATCHDOG_USEC", "STATE_DIRECTORY"})
        variables.erase(own);
    if (user)
        giveTo(*user, variables);
    for (const auto& [name, value] : request.environment)
        variables[name] = value;
    variables[PARAMETERS] = request.writeParameters(token);
    std::vector<std::string> texts;
    for (const auto& [name, value] : variables)
        texts.push_back(name + "=" + value);
    return PointerList(std::move(texts));
}

/// How the new process begins. Its signals are those of a fresh program, whatever the process manager does with its
/// own.
class Attributes
{
public:
    Attributes()
    {
        sigset_t signals;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setpgroup(&attributes, 0);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes; }

private:
    posix_spawnattr_t attributes;
};

/// Opened here, where it is known what failed: the new process could only say that its program was not started.
Corvane::FileDescriptor openWorkingDirectory(const std::string& path)
{
    Corvane::FileDescriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || faccessat(folder.get(), ".", X_OK, AT_EACCESS) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot work in " + path);
    return folder;
}

/// What the new process does before its program runs.
class Actions
{
public:
    Actions(int folder, int output, int error)
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
        posix_spawn_file_actions_addfchdir_np(&actions, folder);
        // Not every library that the process manager uses keeps its descriptors to itself.
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    }
    ~Actions() { posix_spawn_file_actions_destroy(&actions); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions; }

private:
    posix_spawn_file_actions_t actions;
};

/// @return none where the application runs as the process manager's own user
std::optional<User> findUserOf(const LaunchRequest& request)
{
    if (request.user.empty())
        return std::nullopt;
    std::optional<User> user = findUser(request.user);
    if (!user)
        throw std::runtime_error("cannot start " + request.program + ": there is no user " + request.user);
    return user;
}

} // namespace

Process launch(const LaunchRequest& request, const std::string& token, const OutputFiles& files)
{
    const std::optional<User> user = findUserOf(request);
    const OutputFiles::Run run = files.beginRun(token);
    PointerList arguments = makeArguments(request);
    PointerList environment = makeEnvironment(request, token, user);
    const Attributes attributes;
    const Corvane::FileDescriptor folder = openWorkingDirectory(request.workingDirectory);
    const Actions actions(folder.get(), run.output.get(), run.error.get());
    pid_t pid = -1;
    const int failure = user ? spawnAs(*user,
                                       {.program = request.program.c_str(),
                                        .arguments = arguments.get(),
                                        .environment = environment.get(),
                                        .folder = folder.get(),
                                        .output = run.output.get(),
                                        .error = run.error.get()},
                                       pid)
                             : posix_spawnp(&pid, request.program.c_str(), actions.get(), attributes.get(),
                                            arguments.get(), environment.get());
    if (failure != 0)
        throw std::system_error(failure, std::generic_category(), "cannot start " + request.program);
    // A child that nobody has waited for keeps its id, so this is the one that was started.
    std::optional<Process> process = Process::find(pid, true);
    if (process)
        return std::move(*process);
    const int reason = errno;
    kill(-pid, SIGKILL);
    throw std::system_error(reason, std::generic_category(), "cannot watch " + request.program);
}

void raiseNiceLimit()
{
    constexpr rlim_t NICE_ZERO = 20;
    rlimit limit{};
    getrlimit(RLIMIT_NICE, &limit);
    if (limit.rlim_cur >= NICE_ZERO)
        return;
    limit.rlim_cur = NICE_ZERO;
    if (limit.rlim_max < NICE_ZERO)
        limit.rlim_max = NICE_ZERO;
    if (setrlimit(RLIMIT_NICE, &limit) != 0)
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Launcher", __LINE__,
                                   "cannot raise the limit for nice values: %s; applications may be unable to give the "
                                   "focus back\n",
                                   std::strerror(errno));
}

} // namespace Procmand
