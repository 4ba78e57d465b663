#include "Curves.h"

#include <Box.h>
#include <Rounds.h>
#include <stdexcept>
#include <thread>

namespace Corvane::Benchmark
{

namespace
{

/// Two keep-alives of every application.
constexpr std::chrono::seconds OBSERVATION{10};

/// @return the index of a window, which the list of all of them has
std::string findWindow(Box& box)
{
    const std::string key = "\"index\":";
    const std::string windows = box.call("IWindowCompositing::getWindows");
    const std::size_t begin = windows.find(key);
    if (begin == std::string::npos)
        throw std::runtime_error("no window has an index");
    return std::to_string(std::stoul(windows.substr(begin + key.size())));
}

/// How many of the applications that are launched for a point are timed.
constexpr int TIMED = 3;

/// @return milliseconds to the first keep-alive of those that are launched last, one at a time; the median
double launchUpTo(Box& box, std::vector<std::string>& uids, int count)
{
    const auto isBelow = [&uids](int limit) { return static_cast<int>(uids.size()) < limit; };
    while (isBelow(count - TIMED))
        uids.push_back(box.launch());
    for (const std::string& uid : uids)
        box.awaitKeepAlive(uid);
    Series times;
    while (isBelow(count)) {
        const Clock::time_point start = Clock::now();
        uids.push_back(box.launch());
        times.push_back(Microseconds(box.awaitKeepAlive(uids.back()) - start).count() / 1000);
    }
    return median(times);
}

double measureKeepAlive(Box& box)
{
    const long before = box.countKeepAlives();
    const std::chrono::nanoseconds used = readProcessorTime(box.getManager());
    std::this_thread::sleep_for(OBSERVATION);
    const Microseconds time = readProcessorTime(box.getManager()) - used;
    return time.count() / static_cast<double>(box.countKeepAlives() - before);
}

} // namespace

void measureBox(const std::vector<int>& points, const Options&, const Curve::Sink& sink)
{
    Box box;
    std::vector<std::string> uids;
    for (int point : points) {
        const double launch = launchUpTo(box, uids, point);
        const std::string window = R"({"index":)" + findWindow(box) + "}";
        sink({static_cast<double>(point), measureKeepAlive(box), static_cast<double>(countThreads(box.getManager())),
              static_cast<double>(readProportionalMemory(box.getManager())),
              box.timeCall("IApplicationManager::getApplications"), box.timeCall("IWindowCompositing::getWindows"),
              box.timeCall("IWindowCompositing::bringToFront", window), launch});
    }
}

} // namespace Corvane::Benchmark
