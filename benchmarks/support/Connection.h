#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Benchmark
{

/// A client's connection to a server: bare system calls, nothing of the library.
class Connection
{
public:
    /// Waits until the server is there.
    explicit Connection(const std::string& path);
    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&&) = delete;
    ~Connection();

    /// Makes the call that is measured. @throws std::runtime_error  the answer is a wrong one
    void call();
    /// The same with a message of any length that gets the same answer.
    void call(std::string_view request);
    /// Subscribes to what a window tells.
    void subscribe();
    /// Takes the notification of a call. @throws std::runtime_error  it is another one
    void takeNotification();
    /// Reads until the server closes the connection. @return the last that it sent, some kilobytes
    std::string readToEnd();

private:
    void expect(std::string_view line);

    int socket = -1;
    std::array<char, 4096> buffer;
};

/// @return the call that is measured, made so long by a member that means nothing
/// @param size  in bytes; at least that of the call with such a member
std::string makeRequest(std::size_t size);

/// @return so many subscribers
std::vector<Connection> subscribe(const std::string& path, int count);

} // namespace Corvane::Benchmark
