#include <support/ChildProcess.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <support/CapturedOutput.h>
#include <support/MemoryFile.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

/// The words that start a program of this build here: for programs of another processor those of the emulator come
/// first (environment variable CORVANE_TEST_EMULATOR, separated by spaces).
std::vector<std::string> makeCommand(const std::vector<std::string>& command)
{
    const char* const emulator = std::getenv("CORVANE_TEST_EMULATOR");
    std::istringstream words(emulator != nullptr ? emulator : "");
    std::vector<std::string> result{std::istream_iterator<std::string>(words), {}};
    result.insert(result.end(), command.begin(), command.end());
    return result;
}

std::vector<std::string> makeEnvironment(const ChildProcess::Environment& changes)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (!changes.contains(std::string(*entry, std::strcspn(*entry, "="))))
            result.emplace_back(*entry);
    for (const auto& [name, value] : changes)
        if (value)
            result.push_back(name + "=" + *value);
    return result;
}

std::vector<char*> makePointers(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t spawn(const std::vector<std::string>& command, const ChildProcess::Environment& environment, int output,
            int error)
{
    std::vector<std::string> words = makeCommand(command);
    std::vector<std::string> variables = makeEnvironment(environment);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, error, STDERR_FILENO);
    pid_t pid = -1;
    const int reason = posix_spawnp(&pid, words[0].c_str(), &files, nullptr, makePointers(words).data(),
                                    makePointers(variables).data());
    posix_spawn_file_actions_destroy(&files);
    if (reason != 0)
        throw std::runtime_error(words[0] + ": " + std::strerror(reason));
    return pid;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Environment& environment)
    : output(createMemoryFile("output")), error(createMemoryFile("error"))
{
    pid = spawn(command, environment, output, error);
}

ChildProcess::~ChildProcess()
{
    if (!hasEnded()) {
        sendSignal(SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    close(output);
    close(error);
}

void ChildProcess::sendSignal(int signal)
{
    if (!hasEnded())
        kill(pid, signal);
}

bool ChildProcess::hasEnded()
{
    if (!reaped)
        reaped = waitpid(pid, &waitStatus, WNOHANG) == pid;
    return reaped;
}

ProcessEnd ChildProcess::wait(std::chrono::milliseconds deadline)
{
    ProcessEnd end;
    if (!await([this] { return hasEnded(); }, deadline))
        return end;
    if (WIFEXITED(waitStatus))
        end.status = WEXITSTATUS(waitStatus);
    if (WIFSIGNALED(waitStatus))
        end.signal = WTERMSIG(waitStatus);
    return end;
}

bool ChildProcess::awaitOutput(const std::string& text, std::chrono::milliseconds deadline)
{
    const auto isThere = [&] { return getOutput().find(text) != std::string::npos; };
    await([&] { return isThere() || hasEnded(); }, deadline);
    return isThere();
}

std::string ChildProcess::getOutput() const
{
    return readWholeFile(output);
}

std::string ChildProcess::getError() const
{
    return readWholeFile(error);
}

ChildProcess::Environment leavingSignalsToTheProgram()
{
    ChildProcess::Environment environment;
    for (const char* name : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        const char* const given = std::getenv(name);
        environment[name] = std::string(given != nullptr ? given : "") +
                            ":handle_segv=0:handle_abort=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0";
    }
    return environment;
}

} // namespace Corvane::Test
