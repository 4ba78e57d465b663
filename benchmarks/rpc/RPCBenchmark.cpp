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
                  "A third server is as bare, but parses each message and its parameters and holds signals off: the "
                  "least that a\ncontrol server can do. All servers and the client share one core; their rounds take "
                  "turns; medians and their\nratios to the bare server are printed.");
        return 0;
    }
    stayOnOneCore();
    char folder[] = "/tmp/corvane-XXXXXX";
    if (mkdtemp(folder) == nullptr)
        return 1;
    setenv("CORVANE_RUNTIME_DIR", folder, 1);
    {
        const std::string barePath = std::string(folder) + "/bare";
        const std::string strictPath = std::string(folder) + "/strict";
        Contender bare(barePath, [&] { runBareServer(barePath); });
        Contender strict(strictPath, [&] { runStrictServer(strictPath); });
        Contender window(std::string(folder) + "/APPbenchmark.sock", [] { runWindowServer(); });
        Contender* const contenders[] = {&bare, &strict, &window};
        for (Contender* contender : contenders)
            contender->measureRound(CALLS);
        for (int i = 0; i < ROUNDS; ++i)
            for (Contender* contender : contenders)
                contender->measureRound(CALLS);
        const auto print = [&](const char* name, const Contender& contender) {
            std::printf("%-6s  %7.2f  %5.2f  %11ld\n", name, contender.getMedian(),
                        contender.getMedian() / bare.getMedian(), contender.getResidentSet());
        };
        std::puts("server  us/call  ratio  resident kB");
        print("bare", bare);
        print("strict", strict);
        print("window", window);
        std::printf("goal of the window: %.2f, %s\n", GOAL,
                    window.getMedian() <= GOAL * bare.getMedian() ? "reached" : "missed");
    }
    std::filesystem::remove_all(folder);
    return 0;
}
