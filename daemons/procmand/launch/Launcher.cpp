#include "launch/Launcher.h"

#include "launch/Remains.h"

#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

constexpr char PARAMETERS[] = "CORVANE_APP_PARAMETERS";

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

PointerList makeEnvironment(const LaunchRequest& request, const std::string& token, const std::string& mark,
                            const std::optional<User>& user)
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
    variables[MARK_VARIABLE] = mark;
    std::vector<std::string> texts;
    for (const auto& [name, value] : variables)
        texts.push_back(name + "=" + value);
    return PointerList(std::move(texts));
}

/// @return where the program is looked for
std::vector<std::string> listPaths(const std::string& program)
{
    if (program.find('/') != program.npos)
        return {program};
    const char* const variable = std::getenv("PATH");
    std::istringstream folders(variable == nullptr ? "/bin:/usr/bin" : variable);
    std::vector<std::string> paths;
    for (std::string folder; std::getline(folders, folder, ':');)
        paths.push_back((folder.empty() ? "." : folder) + "/" + program);
    return paths;
}

/// Opened here, where it is known what failed: the new process could only say that its program was not started.
Corvane::FileDescriptor openWorkingDirectory(const std::string& path)
{
    Corvane::FileDescriptor folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || faccessat(folder.get(), ".", X_OK, AT_EACCESS) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot work in " + path);
    return folder;
}

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

StartPlan planLaunch(const LaunchRequest& request, const std::string& token, const std::string& mark,
                     const OutputFiles& files)
{
    std::optional<User> user = findUserOf(request);
    OutputFiles::Run run = files.beginRun(token);
    PointerList environment = makeEnvironment(request, token, mark, user);
    std::vector<gid_t> groups = user ? user->findGroups() : std::vector<gid_t>();
    return {.paths = listPaths(request.program),
            .arguments = makeArguments(request),
            .environment = std::move(environment),
            .user = std::move(user),
            .groups = std::move(groups),
            .folder = openWorkingDirectory(request.workingDirectory),
            .output = std::move(run.output),
            .error = std::move(run.error)};
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
