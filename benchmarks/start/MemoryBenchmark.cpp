#include <Process.h>
#include <Rounds.h>
#include <thread>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 5;
/// After this time a program does nothing but sleep.
constexpr std::chrono::seconds SETTLING{1};

/// @return kilobytes that a program has for itself alone
double measureMemory(const std::vector<std::string>& words)
{
    const Process process(words);
    std::this_thread::sleep_for(SETTLING);
    return static_cast<double>(readPrivateMemory(process.getId()));
}

std::vector<Figure> measure(const Options& options)
{
    const RuntimeFolder folder;
    const std::vector<std::string> hello{HELLO_WINDOW, "--application-type=demo", "--authorization-token=hello"};
    const std::vector<Series> series = takeTurns(options.rounds(ROUNDS), {[] { return measureMemory({START_EMPTY}); },
                                                                          [] { return measureMemory({START_LINKED}); },
                                                                          [&] { return measureMemory(hello); }});
    return {compare("private memory of hello-window", "kB", series[2], series[0], Goal::ratioAtMost(1.7)),
            compare("private memory of an empty program with all libraries", "kB", series[1], series[0])};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "The private memory of hello-window, idle, against an empty C++ program, and such a program that has all\n"
        "libraries loaded: what it has written to and shares with nobody.",
        measure);
}
