#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 15;
constexpr int CALLS = 400;

/// @return microseconds of a call whose notifications wait in the subscribers' sockets until it is answered
double timeCall(Connection& caller, std::vector<Connection>& subscribers)
{
    Series latencies;
    for (int i = 0; i < CALLS; ++i) {
        latencies.push_back(timeEach(1, [&caller] { caller.call(); }));
        for (Connection& subscriber : subscribers)
            subscriber.takeNotification();
    }
    return median(latencies);
}

/// @return microseconds that one notification adds to a call
double timeNotification(const std::string& path, int count)
{
    Connection caller(path);
    std::vector<Connection> nobody;
    timeCall(caller, nobody); // also until the server has seen that the last round's subscribers are gone
    const double without = timeCall(caller, nobody);
    std::vector<Connection> subscribers = subscribe(path, count);
    timeCall(caller, subscribers);
    return (timeCall(caller, subscribers) - without) / count;
}

std::vector<Figure> measure(const Options& options)
{
    struct Case {
        int subscribers;
        double goal;
    };
    stayOnOneCore();
    const RuntimeFolder folder;
    const Server bare = startBareServer(folder);
    const Server window = startWindowServer();
    std::vector<Figure> figures;
    for (const auto& [count, goal] : {Case{60, 1.10}, Case{10, 1.15}, Case{1, 1.35}}) {
        const std::vector<Series> series =
            takeTurns(options.rounds(ROUNDS), {[&, count = count] { return timeNotification(bare.path, count); },
                                               [&, count = count] { return timeNotification(window.path, count); }});
        figures.push_back(compare("a notification to " + std::to_string(count) + " subscribers", "us", series[1],
                                  series[0], Goal::ratioAtMost(goal)));
    }
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "What each notification adds to a call of IWindow::setOpacity, with 60, 10 and 1 subscribers, against a bare\n"
        "server that sends the same bytes to as many. The subscribers read when the call has been answered. One core.",
        measure);
}
