#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Corvane::Benchmark
{

/// A server in a process of its own, on the core that this process runs on, and a connection to it.
class Contender
{
public:
    /// @param run  serves `path` and does not return
    Contender(std::string path, const std::function<void()>& run);
    /// Kills the server.
    ~Contender();
    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;

    /// Makes so many calls, one after the other, and keeps their mean as one round.
    void measureRound(int calls);
    /// @return microseconds a call, the median of the rounds
    double getMedian() const;
    /// @return the resident set of the server, in kilobytes
    long getResidentSet() const;

private:
    void connect();
    void call() const;

    std::string path;
    pid_t server;
    int socket = -1;
    std::vector<double> rounds;
};

/// Keeps this process, and the children that it starts from now on, on one core.
void stayOnOneCore();

} // namespace Corvane::Benchmark
