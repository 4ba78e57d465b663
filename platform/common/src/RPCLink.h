#pragma once

#include "RPCInput.h"
#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane
{

/// The client's end of a connection: sends and receives messages, each with a deadline. Not synchronised.
class RPCLink
{
public:
    using Clock = std::chrono::steady_clock;

    /// The end of a wait that begins now. No wait is longer than a year, so that a deadline that stands for "never"
    /// fits into the clock, and into the seconds of a 32-bit system.
    static Clock::time_point deadlineAfter(std::chrono::milliseconds patience);

    /// Connects without waiting. @return a non-blocking socket. @throws RPCError  as the constructor does
    static FileDescriptor connectNow(const std::string& serverName);

    /// Connects. @throws RPCError  NO_SERVER, TIMED_OUT, BAD_ADDRESS, SYSTEM_FAILURE
    RPCLink(const std::string& serverName, Clock::time_point deadline);

    /// @return whether the server has closed the connection, so far as that can be seen without waiting
    bool isClosed() const;

    /// Sends a message; its line feed is added. @throws RPCError  TIMED_OUT, DISCONNECTED
    void send(std::string message, Clock::time_point deadline);

    /// Waits for the next message.
    /// @param wakeUp  descriptor that ends the wait when it can be read, or -1
    /// @return the message; nothing when `wakeUp` ended the wait
    /// @throws RPCError  TIMED_OUT, DISCONNECTED, BAD_ANSWER (longer than any message may be)
    std::optional<std::string> receive(Clock::time_point deadline, int wakeUp = -1);

private:
    bool wait(short events, Clock::time_point deadline, int wakeUp);

    /// An answer may be longer than a call: a description of a server, for instance. This bounds what a broken server
    /// can do.
    static constexpr std::size_t MESSAGE_LIMIT = 16 * 1024 * 1024;

    FileDescriptor socket;
    RPCInput input{MESSAGE_LIMIT};
};

} // namespace Corvane
