#pragma once

#include <corvane/common/FileDescriptor.h>
#include <optional>
#include <string>
#include <string_view>
#include <support/Await.h>

namespace Corvane::Test
{

/// A client that sends bytes as they are and reads what comes back line by line.
class RawClient
{
public:
    /// Connects to the socket of a server. A test fails at once when nobody listens there.
    explicit RawClient(const std::string& path);

    /// Sends all of it, however long the server takes to read.
    void send(std::string_view bytes);
    /// Tells the server that nothing more is coming.
    void endInput();
    /// @return the next line without its line feed; nothing when the server closed the connection or nothing came
    std::optional<std::string> receiveLine();
    /// Waits until there is something to read, and leaves it where it is. @return false when nothing came
    bool awaitInput();
    /// @return the line that answers `message`
    std::string call(std::string_view message);
    /// @return whether the server closed the connection, after everything it had sent was read
    bool awaitEnd();
    int getSocket() const { return socket.get(); }

private:
    bool fill();

    FileDescriptor socket;
    std::string input;
};

} // namespace Corvane::Test
