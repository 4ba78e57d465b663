#include "Peers.h"

#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 15;
constexpr int CALLS = 1000;

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    const RuntimeFolder folder;
    const Server server = startWindowServer();
    std::vector<std::unique_ptr<Peer>> peers;
    peers.push_back(makeSdBusPeer());
    peers.push_back(makeDBusPeer(folder));
    peers.push_back(makeGrpcPeer(folder));
    Connection window(server.path);
    std::vector<std::function<double()>> contenders{[&] { return timeEach(CALLS, [&] { window.call(); }); }};
    for (const auto& peer : peers) {
        peer->connect();
        contenders.emplace_back([&peer] { return timeEach(CALLS, [&peer] { peer->call(); }); });
    }
    const std::vector<Series> series = takeTurns(options.rounds(ROUNDS), contenders);
    std::vector<Figure> figures;
    for (std::size_t i = 0; i < peers.size(); ++i)
        figures.push_back(
            compare("round trip against " + peers[i]->getName(), "us", series[0], series[i + 1], peers[i]->getGoal()));
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "The round trip of IWindow::setOpacity against a call with one number and no result of sd-bus peer to peer,\n"
        "sd-bus over dbus-daemon, and gRPC. All servers and clients share one core, under SCHED_BATCH.",
        measure);
}
