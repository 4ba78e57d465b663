#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>
#include <thread>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 15;
constexpr int CALLS = 20;
constexpr std::size_t SIZE = 1'000'000;
constexpr std::chrono::milliseconds PAUSE{500}; // for which a window keeps memory for the next large message, and more
/// In kilobytes, microseconds.
constexpr double MEMORY_GOAL = 100;
constexpr double TIME_GOAL = 280;

/// @return what a server has more of its own after large messages than after small ones, in kilobytes
double measureRemains(const Server& server, Connection& connection, const std::string& large)
{
    const auto useALittle = [&] { timeEach(CALLS, [&] { connection.call(); }); };
    useALittle();
    const long before = readPrivateMemory(server.process.getId());
    for (int i = 0; i < CALLS; ++i)
        connection.call(large);
    std::this_thread::sleep_for(PAUSE);
    useALittle();
    return static_cast<double>(readPrivateMemory(server.process.getId()) - before);
}

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    const RuntimeFolder folder;
    const Server bareServer = startBareServer(folder);
    const Server windowServer = startWindowServer();
    Connection bare(bareServer.path);
    Connection window(windowServer.path);
    const std::string request = makeRequest(SIZE);
    Figure memory{.name = "what stays after messages of 1 MB", .unit = "kB", .goal = Goal::valueAtMost(MEMORY_GOAL)};
    memory.value = measureRemains(windowServer, window, request);
    const auto timeWith = [&](Connection& connection) {
        return [&] { return timeEach(CALLS, [&] { connection.call(request); }); };
    };
    const std::vector<Series> series = takeTurns(options.rounds(ROUNDS), {timeWith(bare), timeWith(window)});
    return {compare("a message of 1 MB", "us", series[1], series[0], Goal::valueAtMost(TIME_GOAL)), memory};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "How long a call of IWindow::setOpacity takes with a message of 1 MB, of which an unknown member is most, and\n"
        "what private memory stays with the window half a second afterwards. The bare server only receives it. One "
        "core.",
        measure);
}
