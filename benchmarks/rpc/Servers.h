#pragma once

#include <string>

namespace Corvane::Benchmark
{

/// The call that is measured, and its answer, each a whole message.
inline constexpr char REQUEST[] = R"({"jsonrpc":"2.0","id":17,"method":"IWindow::setOpacity","params":{"opacity":128}})"
                                  "\n";
inline constexpr char ANSWER[] = R"({"jsonrpc":"2.0","id":17,"result":null})"
                                 "\n";

/// Serves `path` in this process until it is killed: epoll, receive, send the answer; no parsing, no checks.
[[noreturn]] void runBareServer(const std::string& path);

/// The same, but with what no control server can leave out: before it answers it parses the message, parses the
/// parameters once more and changes the signal mask twice. What is parsed is not looked at.
[[noreturn]] void runStrictServer(const std::string& path);

/// Runs a window application in this process until it is killed; its control server is named "APPbenchmark".
[[noreturn]] void runWindowServer();

} // namespace Corvane::Benchmark
