#pragma once

#include <string>
#include <unistd.h>
#include <vector>

namespace Corvane::Test
{

/// A line of `corvaneDebugPrint`, taken apart.
struct DebugLine {
    std::string process;
    int pid;
    char level; ///< E, W, I or N
    std::string module;
    std::string component;
    int line;
    std::string message;
};

/// Takes what this process, and the children that it starts, write to a descriptor, from construction to destruction.
/// Standard error is where debug lines go in a test.
///
///     CapturedOutput error;
///     EXPECT_THROW(application.setPriority(20), Exception);
///     EXPECT_EQ(error.getMessages(), std::vector<std::string>{"invalid priority"});
class CapturedOutput
{
public:
    explicit CapturedOutput(int descriptor = STDERR_FILENO);
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// Everything so far.
    std::string getText() const;
    std::vector<std::string> getLines() const;
    /// The debug lines so far; other lines are left out.
    std::vector<DebugLine> getDebugLines() const;
    /// The messages of the debug lines so far.
    std::vector<std::string> getMessages() const;

private:
    const int descriptor;
    const int original;
    const int file;
};

/// Everything in a file, from its beginning, wherever its descriptor stands.
std::string readWholeFile(int descriptor);
/// The lines of a text without their line feeds; a rest without one counts as a line.
std::vector<std::string> splitLines(const std::string& text);
/// The debug lines among the lines of a text.
std::vector<DebugLine> parseDebugLines(const std::string& text);

} // namespace Corvane::Test
