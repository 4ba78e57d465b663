#include "Measurement.h"
#include "Servers.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{

constexpr int ROUNDS = 15;
constexpr int CALLS = 2000;
/// What a call may cost against the bare server.
constexpr double GOAL = 1.20;

} // namespace

int main(int argc, char**)
{
    using namespace Corvane::Benchmark;
    if (argc > 1) {
        std::puts("benchmark-rpc: the round trip of IWindow::setOpacity against a bare epoll server that sends the "
                  "same bytes.\n"
                  "Both servers and the client share one core; their rounds take turns; medians and their ratio are "
                  "printed.");
        return 0;
    }
    stayOnOneCore();
    char folder[] = "/tmp/corvane-XXXXXX";
    if (mkdtemp(folder) == nullptr)
        return 1;
    setenv("CORVANE_RUNTIME_DIR", folder, 1);
    {
        const std::string barePath = std::string(folder) + "/bare";
        Contender bare(barePath, [&] { runBareServer(barePath); });
        Contender window(std::string(folder) + "/APPbenchmark.sock", [] { runWindowServer(); });
        bare.measureRound(CALLS);
        window.measureRound(CALLS);
        Contender* const contenders[] = {&bare, &window};
        for (int i = 0; i < ROUNDS; ++i)
            for (Contender* contender : contenders)
                contender->measureRound(CALLS);
        const double ratio = window.getMedian() / bare.getMedian();
        std::printf("server  us/call  resident kB\nbare    %7.2f  %11ld\nwindow  %7.2f  %11ld\nratio   %7.2f  (goal "
                    "%.2f: %s)\n",
                    bare.getMedian(), bare.getResidentSet(), window.getMedian(), window.getResidentSet(), ratio, GOAL,
                    ratio <= GOAL ? "reached" : "missed");
    }
    std::filesystem::remove_all(folder);
    return 0;
}
