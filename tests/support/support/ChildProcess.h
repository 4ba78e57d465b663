#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <support/Await.h>
#include <sys/types.h>
#include <vector>

namespace Corvane::Test
{

/// How a process ended: by an exit status or by a signal; by neither while it runs.
struct ProcessEnd {
    std::optional<int> status;
    std::optional<int> signal;
};

/// A program that runs beside the test. Destruction kills it if it still runs.
///
///     ChildProcess child({PROGRAM, "--option"});
///     ASSERT_TRUE(child.awaitOutput("ready"));
///     child.sendSignal(SIGTERM);
///     EXPECT_EQ(child.wait().signal, SIGTERM);
class ChildProcess
{
public:
    /// Variables to set for the child besides those of the test; without a value: to remove.
    using Environment = std::map<std::string, std::optional<std::string>>;

    /// @param command  the program's path and its arguments
    /// @throws std::runtime_error  the program cannot be started
    explicit ChildProcess(const std::vector<std::string>& command, const Environment& environment = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t getPid() const { return pid; }
    void sendSignal(int signal);
    /// Waits for the end of the child. @return how it ended; neither status nor signal when the deadline has passed
    ProcessEnd wait(std::chrono::milliseconds deadline = DEADLINE);
    /// Waits until the child has written `text` to its standard output. @return false when it ended or the deadline
    /// passed before
    bool awaitOutput(const std::string& text, std::chrono::milliseconds deadline = DEADLINE);

    /// What the child has written so far.
    std::string getOutput() const;
    std::string getError() const;

private:
    bool hasEnded();

    int output;
    int error;
    pid_t pid = -1;
    bool reaped = false;
    int waitStatus = 0;
};

/// Lets a child that was built with a sanitizer leave fatal signals to the program, as it does without one.
ChildProcess::Environment leavingSignalsToTheProgram();

} // namespace Corvane::Test
