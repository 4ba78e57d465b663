#include "Curves.h"

#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>

namespace Corvane::Benchmark
{

namespace
{

using Points = std::vector<int>;

constexpr int ROUNDS = 9;
constexpr int CALLS = 500;
constexpr int LARGE_CALLS = 40;
constexpr int LARGE = 100'000;

/// The two servers that most curves compare, with a caller each.
class Pair
{
public:
    Pair() : bareServer(startBareServer(folder)), windowServer(startWindowServer()) { connectUpTo(1); }

    /// Measures a caller of each. @return microseconds: the window, the bare server
    template <class Measure>
    std::vector<double> compare(const Options& options, Measure measure)
    {
        const std::vector<Series> series =
            takeTurns(options.rounds(ROUNDS), {[&] { return measure(window); }, [&] { return measure(bare); }});
        return {median(series[0]), median(series[1])};
    }

    /// Makes further connections, until each server has so many.
    void connectUpTo(int count)
    {
        while (static_cast<int>(bare.size()) < count) {
            bare.emplace_back(bareServer.path).call();
            window.emplace_back(windowServer.path).call();
        }
    }

    /// The same with connections that subscribe.
    void subscribeUpTo(int count)
    {
        while (static_cast<int>(bare.size()) <= count) {
            bare.emplace_back(bareServer.path).subscribe();
            window.emplace_back(windowServer.path).subscribe();
        }
    }

private:
    const RuntimeFolder folder;
    const Server bareServer;
    const Server windowServer;
    std::vector<Connection> bare;
    std::vector<Connection> window;
};

double timeCalls(std::vector<Connection>& connections)
{
    return timeEach(CALLS, [&] { connections.front().call(); });
}

/// All connections but the first one are subscribers.
double timeNotifyingCalls(std::vector<Connection>& connections)
{
    Series latencies;
    for (int i = 0; i < CALLS; ++i) {
        latencies.push_back(timeEach(1, [&] { connections.front().call(); }));
        for (auto subscriber = connections.begin() + 1; subscriber != connections.end(); ++subscriber)
            subscriber->takeNotification();
    }
    return median(latencies);
}

void give(int point, const std::vector<double>& figures, const Curve::Sink& sink)
{
    std::vector<double> row{static_cast<double>(point)};
    row.insert(row.end(), figures.begin(), figures.end());
    sink(row);
}

void measureConnections(const Points& points, const Options& options, const Curve::Sink& sink)
{
    Pair pair;
    for (int point : points) {
        pair.connectUpTo(point);
        give(point, pair.compare(options, timeCalls), sink);
    }
}

void measureSubscribers(const Points& points, const Options& options, const Curve::Sink& sink)
{
    Pair pair;
    for (int point : points) {
        pair.subscribeUpTo(point);
        give(point, pair.compare(options, timeNotifyingCalls), sink);
    }
}

void measureListeners(const Points& points, const Options& options, const Curve::Sink& sink)
{
    for (int point : points) {
        const RuntimeFolder folder;
        const Server server = startWindowServer(point);
        Connection caller(server.path);
        const auto measure = [&] { return timeEach(CALLS, [&] { caller.call(); }); };
        give(point, {median(takeTurns(options.rounds(ROUNDS), {measure})[0])}, sink);
    }
}

void measureMessages(const Points& points, const Options& options, const Curve::Sink& sink)
{
    Pair pair;
    for (int point : points) {
        const std::string request = makeRequest(static_cast<std::size_t>(point));
        const auto measure = [&](std::vector<Connection>& connections) {
            return timeEach(point < LARGE ? CALLS : LARGE_CALLS, [&] { connections.front().call(request); });
        };
        give(point, pair.compare(options, measure), sink);
    }
}

} // namespace

std::vector<Curve> listCurves()
{
    const auto onOneCore = [](auto measure) {
        return [measure](const Points& points, const Options& options, const Curve::Sink& sink) {
            stayOnOneCore();
            measure(points, options, sink);
        };
    };
    return {
#ifdef CORVANE_HAS_BOX // first: it is the one that uses all cores
        {"box",
         "applications, us of processor a keep-alive, threads, kB, us of getApplications, us of getWindows, us of "
         "bringToFront, ms to the first keep-alive",
         {1, 10, 25, 50, 100, 150, 200},
         measureBox},
#endif
        {"connections",
         "connections, us a call, us a call of the bare server",
         {1, 2, 4, 8, 16, 32, 48, 64},
         onOneCore(measureConnections)},
        {"subscribers",
         "subscribers, us a call, us a call of the bare server",
         {1, 2, 5, 10, 20, 40, 60, 80, 100},
         onOneCore(measureSubscribers)},
        {"listeners",
         "listeners, us a call",
         {1, 3, 10, 30, 100, 200, 400, 600, 800, 1000},
         onOneCore(measureListeners)},
        {"messages",
         "bytes, us a call, us a call of the bare server",
         {100, 300, 1000, 3000, 10'000, 30'000, 60'000, 100'000, 200'000, 300'000, 600'000, 1'000'000},
         onOneCore(measureMessages)},
    };
}

} // namespace Corvane::Benchmark
