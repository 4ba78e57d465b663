#include "Box.h"

#include <thread>

namespace
{

using namespace Corvane::Benchmark;

/// Two keep-alives of every application.
constexpr std::chrono::seconds OBSERVATION{10};
constexpr std::size_t MANY = 100;
constexpr std::size_t QUICK_MANY = 10;
/// Microseconds of processor a keep-alive.
constexpr double GOAL = 20;

void launchUpTo(Box& box, std::vector<std::string>& uids, std::size_t count)
{
    while (uids.size() < count)
        uids.push_back(box.launch());
    for (const std::string& uid : uids)
        box.awaitKeepAlive(uid);
}

std::vector<Figure> measure(const Options& options)
{
    Box box;
    std::vector<std::string> uids;
    launchUpTo(box, uids, 1);
    const int threadsOfOne = countThreads(box.getManager());
    const std::size_t many = options.isQuick ? QUICK_MANY : MANY;
    launchUpTo(box, uids, many);
    const int threadsOfMany = countThreads(box.getManager());
    const long keepAlives = box.countKeepAlives();
    const std::chrono::nanoseconds used = readProcessorTime(box.getManager());
    std::this_thread::sleep_for(OBSERVATION);
    const Microseconds time = readProcessorTime(box.getManager()) - used;
    const auto heard = static_cast<double>(box.countKeepAlives() - keepAlives);
    const std::string with = " with " + std::to_string(many) + " applications";
    return {{.name = "processor of procmand a keep-alive" + with,
             .value = time.count() / heard,
             .unit = "us",
             .goal = Goal::valueAtMost(GOAL)},
            {.name = "threads of procmand" + with,
             .value = double(threadsOfMany),
             .unit = "threads",
             .reference = double(threadsOfOne),
             .ratio = double(threadsOfMany) / threadsOfOne,
             .goal = Goal::ratioAtMost(1)},
            {.name = "proportional memory of procmand" + with,
             .value = double(readProportionalMemory(box.getManager())),
             .unit = "kB"}};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(argc, argv,
                        "What corvane-procmand takes of a processor for each keep-alive of 100 applications, one "
                        "subscriber that hears\n"
                        "all of them included, and its threads then, against those with one application.",
                        measure);
}
