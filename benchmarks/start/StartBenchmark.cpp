#include <Process.h>
#include <Rounds.h>
#include <array>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 200;
/// Only what is broken ever takes that long.
constexpr int DEADLINE_MS = 20'000;

/// @return milliseconds from the fork to the byte that the program writes
double timeStart(const std::string& program)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe");
    const Clock::time_point start = Clock::now();
    const Process process(std::vector<std::string>{program, std::to_string(ends[1]), "--application-type=benchmark",
                                                   "--authorization-token=start"});
    pollfd news{.fd = ends[0], .events = POLLIN, .revents = 0};
    const bool hasCome = poll(&news, 1, DEADLINE_MS) == 1;
    const Microseconds time = Clock::now() - start;
    close(ends[0]);
    close(ends[1]);
    if (!hasCome)
        throw std::runtime_error("no news of " + program);
    return time.count() / 1000;
}

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    const RuntimeFolder folder;
    const std::vector<Series> series = takeTurns(options.rounds(ROUNDS), {[] { return timeStart(START_EMPTY); },
                                                                          [] { return timeStart(START_LINKED); },
                                                                          [] { return timeStart(START_WINDOW); }});
    return {compare("start of a window to its first keep-alive", "ms", series[2], series[0], Goal::ratioAtMost(1.45)),
            compare("start of an empty program with all libraries", "ms", series[1], series[0])};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "From the fork to the first keep-alive of a window application, against an empty C++ program that says at "
        "once\n"
        "that it runs, and such a program that has all libraries loaded. The libraries are in one folder. One core.",
        measure);
}
