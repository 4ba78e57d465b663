#include "Box.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace
{

using namespace Corvane::Benchmark;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int ROUNDS = 100;
/// Two keep-alives of every application.
constexpr std::chrono::seconds OBSERVATION{10};
/// No further round is begun after this time, so that the program ends within three minutes on a slow machine, too.
constexpr std::chrono::seconds TIME_LIMIT{60};

/// An application may prove that it is alive before the process manager listens; then the next proof, 5 s later, is the
/// first one that is heard. Such rounds are counted, and are not part of the times.
constexpr double MISSED_MS = 4000;

/// The times of one way to start an application, in ms.
struct Times {
    std::vector<double> heard;
    int missed = 0;

    void add(double time)
    {
        if (time < MISSED_MS)
            heard.push_back(time);
        else
            ++missed;
    }
};

double percentile(std::vector<double> values, double part)
{
    if (values.empty())
        throw std::runtime_error("no first keep-alive was heard");
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

/// @return how long the first keep-alive of an application took that `start` starts
template <class Start>
double measureStart(Box& box, Start start)
{
    const auto begin = Clock::now();
    const std::string uid = start();
    const Milliseconds taken = box.awaitKeepAlive(uid) - begin;
    box.end(uid);
    return taken.count();
}

void printRow(const char* name, const Times& launched, const Times& bare, double part)
{
    const double one = percentile(launched.heard, part);
    const double other = percentile(bare.heard, part);
    std::printf("%-8s %10.2f %10.2f %12.2f %7.2f\n", name, one, other, one - other, one / other);
}

void measureStarts(Box& box)
{
    Times launched;
    Times bare;
    int rounds = 0;
    const auto limit = Clock::now() + TIME_LIMIT;
    for (; rounds < ROUNDS && Clock::now() < limit; ++rounds) {
        launched.add(measureStart(box, [&box] { return box.launch(); }));
        bare.add(measureStart(box, [&box, rounds] {
            const std::string uid = "bare" + std::to_string(rounds);
            box.startBare(uid);
            return uid;
        }));
    }
    std::printf("From the start of box-window to its first keep-alive, %d times each, in turns, in ms:\n"
                "%-8s %10s %10s %12s %7s\n",
                rounds, "", "launched", "fork+exec", "difference", "ratio");
    printRow("median", launched, bare, 0.5);
    printRow("p99", launched, bare, 0.99);
    std::printf("%-8s %10d %10d  (sent before corvane-procmand listened; not part of the times)\n", "missed",
                launched.missed, bare.missed);
}

/// @return the value of a line "KEY:  NUMBER kB", 0 where there is none
long readKilobytes(pid_t pid, const std::string& key)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(key + ":"))
            return std::stol(line.substr(key.size() + 1));
    return 0;
}

/// @return the time that the process has used the processor
Milliseconds readProcessorTime(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return Milliseconds(1000.0 * static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK)));
}

void measureCost(Box& box)
{
    std::printf("\ncorvane-procmand with so many applications that do nothing but prove that they are alive:\n"
                "%12s %10s %10s %10s\n",
                "applications", "RSS kB", "PSS kB", "CPU %");
    std::vector<std::string> uids;
    for (const std::size_t count : {1U, 10U, 100U}) {
        while (uids.size() < count)
            uids.push_back(box.launch());
        for (const std::string& uid : uids)
            box.awaitKeepAlive(uid);
        const Milliseconds before = readProcessorTime(box.getManager());
        std::this_thread::sleep_for(OBSERVATION);
        const Milliseconds used = readProcessorTime(box.getManager()) - before;
        std::printf("%12zu %10ld %10ld %10.2f\n", count, readKilobytes(box.getManager(), "Rss"),
                    readKilobytes(box.getManager(), "Pss"), 100.0 * used / Milliseconds(OBSERVATION));
    }
}

} // namespace

int main(int argc, char**)
{
    if (argc > 1) {
        std::puts(
            "benchmark-box: how long box-window takes to its first keep-alive, launched by corvane-procmand and by "
            "fork and exec, in turns; then the memory and the CPU of corvane-procmand with 1, 10 and 100 "
            "applications. Takes about a minute.");
        return 0;
    }
    try {
        Box box;
        measureStarts(box);
        measureCost(box);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "benchmark-box: %s\n", error.what());
        return 1;
    }
}
