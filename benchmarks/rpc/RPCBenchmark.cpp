#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 25;
constexpr int CALLS = 2000;

std::function<double()> makeCalls(Connection& connection)
{
    return [&connection] { return timeEach(CALLS, [&connection] { connection.call(); }); };
}

std::vector<Figure> measureUnder(Scheduling scheduling, const std::string& name, const Goal& goal, int rounds)
{
    setScheduling(scheduling);
    const RuntimeFolder folder;
    const Server bareServer = startBareServer(folder);
    const Server strictServer = startStrictServer(folder);
    const Server windowServer = startWindowServer();
    Connection bare(bareServer.path);
    Connection strict(strictServer.path);
    Connection window(windowServer.path);
    const std::vector<Series> series = takeTurns(rounds, {makeCalls(bare), makeCalls(strict), makeCalls(window)});
    return {compare("round trip, " + name, "us", series[2], series[0], goal),
            compare("round trip of the strict server, " + name, "us", series[1], series[0])};
}

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    const int rounds = options.rounds(ROUNDS);
    std::vector<Figure> figures = measureUnder(Scheduling::BATCH, "batch", Goal::ratioAtMost(1.10), rounds);
    for (Figure& figure : measureUnder(Scheduling::DEFAULT, "default scheduling", Goal::ratioAtMost(1.22), rounds))
        figures.push_back(std::move(figure));
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(argc, argv,
                        "The round trip of IWindow::setOpacity against a bare epoll server that sends the same bytes, "
                        "under SCHED_BATCH\n"
                        "and under default scheduling. A third server is as bare, but parses each message and its "
                        "parameters: the least\n"
                        "that a control server can do. All servers and the client share one core.",
                        measure);
}
