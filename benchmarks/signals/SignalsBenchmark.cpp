#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <random>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int DEATHS = 50;
constexpr int CALLERS = 2;
constexpr std::chrono::seconds DEADLINE{5};
/// To what a window tells of its state; the answer is that of the call.
constexpr std::string_view SUBSCRIPTION_TO_STATE =
    R"({"jsonrpc":"2.0","id":17,"method":"rpc.subscribe","params":{"notifications":["IApplication::onStateChange"]}})"
    "\n";

/// What a fault signal is sent to: the process, or the thread that is at work on the calls.
enum class Target { PROCESS, TRANSPORT };

struct Kind {
    const char* name;
    int signal;
    Target target;
};
constexpr Kind KINDS[] = {
    {"SIGTERM to the process", SIGTERM, Target::PROCESS},   {"SIGSEGV to the process", SIGSEGV, Target::PROCESS},
    {"SIGABRT to the process", SIGABRT, Target::PROCESS},   {"SIGSEGV to the transport", SIGSEGV, Target::TRANSPORT},
    {"SIGBUS to the transport", SIGBUS, Target::TRANSPORT}, {"SIGILL to the transport", SIGILL, Target::TRANSPORT},
};

struct Tally {
    int announced = 0;
    int died = 0; ///< in time, and of the signal
};

pid_t findTransport(pid_t process)
{
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::string name;
        if (std::getline(std::ifstream(task.path() / "comm"), name) && name == "RPCTransport")
            return std::stoi(task.path().filename());
    }
    throw std::runtime_error("the window has no transport");
}

/// Calls until the server is gone.
void makeLoad(const std::string& path)
try {
    for (Connection connection(path);;)
        connection.call();
} catch (const std::runtime_error&) {
}

/// @return whether a process that is a child of this one dies of the signal before the deadline
bool diesOf(int signal, pid_t process)
{
    pollfd end{.fd = static_cast<int>(syscall(SYS_pidfd_open, process, 0)), .events = POLLIN, .revents = 0};
    const bool isInTime = poll(&end, 1, std::chrono::milliseconds(DEADLINE).count()) == 1;
    close(end.fd);
    if (!isInTime)
        kill(process, SIGKILL);
    int status = 0;
    waitpid(process, &status, 0);
    return isInTime && WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

/// Sends a busy window the signal at any moment of its work.
void killOne(const Kind& kind, Tally& tally)
{
    static std::minstd_rand random; // the same moments in each run, as far as the machine has the same speed
    Server window = startWindowServer();
    // The one that is to hear of the end gets nothing else: what waits behind other notifications is lost with the
    // process.
    Connection watcher(window.path);
    for (int i = 0; i < 100; ++i)
        watcher.call(); // until the window has been started
    watcher.call(SUBSCRIPTION_TO_STATE);
    Connection subscriber(window.path);
    subscriber.subscribe();

    std::string heard;
    std::vector<std::jthread> load;
    load.emplace_back([&] { heard = watcher.readToEnd(); });
    load.emplace_back([&] { subscriber.readToEnd(); });
    for (int i = 0; i < CALLERS; ++i)
        load.emplace_back(makeLoad, window.path);
    std::this_thread::sleep_for(std::chrono::microseconds(20'000 + random() % 10'000));

    const pid_t process = window.process.release();
    if (kind.target == Target::PROCESS)
        kill(process, kind.signal);
    else
        tgkill(process, findTransport(process), kind.signal);
    tally.died += diesOf(kind.signal, process) ? 1 : 0;
    load.clear();
    tally.announced += heard.find("ABORTED") != std::string::npos ? 1 : 0;
}

std::vector<Figure> measure(const Options& options)
{
    std::vector<Figure> figures;
    for (const Kind& kind : KINDS) {
        const RuntimeFolder folder;
        const int deaths = options.isQuick ? 3 : DEATHS;
        Tally tally;
        for (int i = 0; i < deaths; ++i)
            killOne(kind, tally);
        const auto add = [&](const char* what, int count) {
            figures.push_back({.name = std::string(kind.name) + what,
                               .value = static_cast<double>(count),
                               .unit = "",
                               .reference = static_cast<double>(deaths),
                               .ratio = static_cast<double>(count) / deaths});
        };
        add(", announced", tally.announced);
        add(", died of", tally.died);
    }
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "How many windows of those that get a fatal signal under full load tell a subscriber that they\n"
        "were aborted, and how many die of the signal within 5 s. A signal to the transport goes to the\n"
        "very thread that is at work on the calls.",
        measure);
}
