#pragma once

#include "Process.h"

#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Benchmark
{

/// The call that is measured, and its answer, each a whole message.
inline constexpr std::string_view REQUEST =
    R"({"jsonrpc":"2.0","id":17,"method":"IWindow::setOpacity","params":{"opacity":128}})"
    "\n";
inline constexpr std::string_view ANSWER = R"({"jsonrpc":"2.0","id":17,"result":null})"
                                           "\n";
/// A subscription to what a window tells, without its keep-alives; its answer is the same.
inline constexpr std::string_view SUBSCRIPTION =
    R"({"jsonrpc":"2.0","id":17,"method":"rpc.subscribe","params":{"notifications":["IWindow::*"]}})"
    "\n";
/// What the subscribers get of the call.
inline constexpr std::string_view NOTIFICATION =
    R"({"jsonrpc":"2.0","method":"IWindow::onOpacityChange","params":{"uid":"benchmark","oldOpacity":128,"newOpacity":128}})"
    "\n";

/// Serves `path` in this process until it is killed: epoll, receive, send the answer; no parsing, no checks. Whoever
/// sends the subscription gets the notification of each call, by a bare send.
[[noreturn]] void runBareServer(const std::string& path);

/// The same, but with what no control server can leave out: before it answers it parses the message, and the
/// parameters once more. What is parsed is not looked at.
[[noreturn]] void runStrictServer(const std::string& path);

/// A server in a process of its own.
struct Server {
    std::string path; ///< of its socket
    Process process;
};

Server startBareServer(const RuntimeFolder& folder);
Server startStrictServer(const RuntimeFolder& folder);
/// A window application with so many listeners of its own. Its uid is "benchmark", so there is one at a time; it takes
/// 256 connections.
Server startWindowServer(int listeners = 0);
/// @return the words that start the program of such an application
std::vector<std::string> describeWindowServer(int listeners = 0);
/// @return the socket of such an application
std::string findWindowSocket();

} // namespace Corvane::Benchmark
