#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <vector>

namespace Corvane::Test
{

/// What a run of corvanectl came to.
struct Outcome {
    int status = -1; ///< -1 when it did not end by itself
    std::string output;
    std::string error;
};

/// The whole words of a command line.
using Words = std::vector<std::string>;

/// Runs corvanectl to its end.
Outcome corvanectl(const Words& words);

/// A hello-window with this uid, in STATE_RUNNING once the constructor is through.
class HelloWindow
{
public:
    explicit HelloWindow(const std::string& uid = "demo");

    /// Stops the process as a whole: from now on its server takes connections, as the system does that, and answers
    /// nothing.
    void stop();

    ChildProcess process;
};

/// Tests of corvanectl beside a hello-window of their own, in a runtime folder of their own.
class WithHelloWindow : public testing::Test
{
protected:
    TemporaryRuntime runtime;
    HelloWindow hello;
};

/// Whether a process of this user may go back from nice 5 to nice 0: found out by trying.
bool mayLowerNice();

} // namespace Corvane::Test
