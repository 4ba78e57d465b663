#include "Box.h"

#include <string>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 100;
constexpr int QUICK_ROUNDS = 5;

/// An application may prove that it is alive before the process manager listens; then the next proof, 5 s later, is the
/// first one that is heard. Such rounds are counted, and are not part of the times.
constexpr double MISSED_MS = 4000;

/// The times of one way to start an application, in ms.
struct Times {
    Series heard;
    int missed = 0;

    void add(double time)
    {
        if (time < MISSED_MS)
            heard.push_back(time);
        else
            ++missed;
    }
};

/// @return how long the first keep-alive of an application took that `start` starts
template <class Start>
double measureStart(Box& box, Start start)
{
    const auto begin = Clock::now();
    const std::string uid = start();
    const std::chrono::duration<double, std::milli> taken = box.awaitKeepAlive(uid) - begin;
    box.end(uid);
    return taken.count();
}

Figure comparePart(const std::string& name, const Times& launched, const Times& bare, double share, double goal)
{
    const double own = quantile(launched.heard, share);
    const double reference = quantile(bare.heard, share);
    return {name, own, "ms", reference, own / reference, Goal::ratioAtMost(goal)};
}

std::vector<Figure> measure(const Options& options)
{
    Box box;
    Times launched;
    Times bare;
    for (int round = 0; round < (options.isQuick ? QUICK_ROUNDS : ROUNDS); ++round) {
        launched.add(measureStart(box, [&box] { return box.launch(); }));
        bare.add(measureStart(box, [&box, round] {
            std::string uid = "bare" + std::to_string(round);
            box.startBare(uid);
            return uid;
        }));
    }
    return {comparePart("launch to the first keep-alive", launched, bare, 0.5, 1.01),
            comparePart("launch to the first keep-alive at the 99th percentile", launched, bare, 0.99, 1.2),
            {.name = "first keep-alives missed of a launch",
             .value = double(launched.missed),
             .unit = "times",
             .goal = Goal::valueAtMost(0)},
            {.name = "first keep-alives missed of a fork and exec", .value = double(bare.missed), .unit = "times"}};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "How long box-window takes to its first keep-alive, as a subscriber of corvane-procmand hears it: launched, "
        "and\n"
        "started by fork and exec, 100 times each, in turns. A first keep-alive that comes before corvane-procmand\n"
        "listens is missed; it is counted and not part of the times.",
        measure);
}
