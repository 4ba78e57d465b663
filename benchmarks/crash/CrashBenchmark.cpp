// Lets applications die of each signal at each place, and tells how many announced it, how many died of that very
// signal, and how long both took: the rows of the table in docs/reliability.md, which scripts/crash-table writes.
//
//     benchmark-crash [--quick] [ROUNDS]
#include <Process.h>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCClient.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Corvane::Benchmark
{
namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using State = ILifecycleManagement;

/// After so long an application that has not died hangs.
constexpr std::chrono::milliseconds DEADLINE{3000};
constexpr int COMMANDS = 3;
constexpr char UID[] = "token-0123456789abcdef";
constexpr int SIGNALS[] = {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGTERM, SIGBUS};

struct Row {
    std::string title;
    std::string place;
    int signal;
    std::string state;
    int further = 0; ///< a second signal, sent at once
};

struct Death {
    std::optional<Milliseconds> announced;
    std::optional<Milliseconds> ended;
    int signal = 0; ///< that it died of
};

std::vector<Row> makeRows()
{
    std::vector<Row> rows;
    const std::string running = State::STATE_RUNNING;
    const auto add = [&](const char* title, const std::string& place) {
        for (const int signal : SIGNALS)
            // The library's threads hold SIGTERM off, which comes from outside only.
            if (signal != SIGTERM || (place != "transport" && place != "handler"))
                rows.push_back({title, place, signal, running});
    };
    add("main thread", "main");
    add("a thread of the application", "thread");
    add("transport, outside of handlers", "transport");
    add("handler of a call", "handler");
    add("listener of a change", "listener");
    add("inside malloc", "malloc");
    rows.push_back({"stack overflow, main thread", "overflow-main", SIGSEGV, running});
    rows.push_back({"stack overflow, handler", "overflow-handler", SIGSEGV, running});
    for (const int signal : SIGNALS)
        rows.push_back({"two at once from outside, the other one SIGTERM", "outside", signal, running, SIGTERM});
    for (const std::string& state :
         {State::STATE_UNINITIALIZED, State::STATE_LOADING, State::STATE_RUNNING, State::STATE_SUSPENDING,
          State::STATE_SUSPENDED, State::STATE_RESUMING, State::STATE_TERMINATING, State::STATE_TERMINATED,
          State::STATE_ABORTED, State::STATE_RUNAWAY})
        for (const int signal : SIGNALS)
            rows.push_back({"from outside, " + state, "outside", signal, state});
    return rows;
}

/// One application, and what there is to hear of its death.
class Victim
{
public:
    explicit Victim(const Row& row) : row(row), process(start(row)), client(std::string("APP") + UID)
    {
        char byte = 0;
        if (read(commands[0], &byte, 1) != 1)
            throw std::runtime_error("the application does not start");
        client.subscribe(
            {"IApplication::onStateChange"},
            [this](const std::string&, const std::string& payload) {
                if (payload.find(R"("newState":"ABORTED")") != payload.npos)
                    announced = Clock::now().time_since_epoch().count();
            },
            [this](bool connected) { isGone = !connected; });
    }
    ~Victim() { close(commands[0]); }
    Victim(const Victim&) = delete;
    Victim& operator=(const Victim&) = delete;

    Death die()
    {
        const pid_t id = process.getId();
        const FileDescriptor end(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
        const auto begin = Clock::now();
        trigger(id);
        pollfd ended{.fd = end.get(), .events = POLLIN, .revents = 0};
        Death death;
        if (poll(&ended, 1, DEADLINE.count()) == 1) {
            death.ended = Clock::now() - begin;
            siginfo_t info = {};
            waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOWAIT);
            death.signal = info.si_code == CLD_EXITED ? 0 : info.si_status;
        }
        awaitDisconnection();
        if (announced != 0)
            death.announced = Clock::time_point(Clock::duration(announced.load())) - begin;
        return death;
    }

private:
    Process start(const Row& row)
    {
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, commands) != 0)
            throw std::runtime_error("no sockets");
        Process child([&] {
            dup2(commands[1], COMMANDS);
            fcntl(COMMANDS, F_SETFD, 0);
            execute({CRASH_VICTIM, row.place, std::to_string(row.signal), row.state, "--application-type=test",
                     std::string("--authorization-token=") + UID});
        });
        close(commands[1]);
        return child;
    }

    void trigger(pid_t id)
    {
        if (row.place == "outside") {
            if (row.further != 0)
                kill(id, row.further);
            kill(id, row.signal);
            return;
        }
        const bool byCall = row.place == "handler" || row.place == "overflow-handler";
        if (!byCall && write(commands[0], "g", 1) != 1)
            throw std::runtime_error("the application is gone");
        char byte = 0;
        if (row.place == "transport" && read(commands[0], &byte, 1) != 1)
            throw std::runtime_error("the application is gone");
        if (byCall || row.place == "transport")
            call();
    }

    void call()
    {
        try {
            client.call("IWindow::handleEvent", R"({"event":{"type":"KeyEvent","keyCode":1,"pressed":true}})",
                        DEADLINE);
        } catch (const RPCError&) {
            // It dies, or has announced that it does.
        }
    }

    /// What was announced has arrived when the connection has ended, and that ends with the process.
    void awaitDisconnection()
    {
        kill(process.getId(), SIGKILL);
        while (!isGone)
            poll(nullptr, 0, 1);
    }

    const Row& row;
    int commands[2] = {-1, -1};
    Process process;
    std::atomic<Clock::rep> announced{0};
    std::atomic<bool> isGone{false};
    RPCClient client; // last: its thread writes what is above
};

std::string describe(std::vector<double> times)
{
    if (times.empty())
        return "- | -";
    std::sort(times.begin(), times.end());
    char text[64];
    std::snprintf(text, sizeof text, "%.2f | %.2f", times[times.size() / 2], times[(times.size() * 99 + 99) / 100 - 1]);
    return text;
}

void printRow(const Row& row, int rounds)
{
    std::vector<double> announced;
    std::vector<double> ended;
    int diedOfIt = 0;
    for (int i = 0; i < rounds; ++i) {
        const Death death = Victim(row).die();
        if (death.announced)
            announced.push_back(death.announced->count());
        if (death.ended)
            ended.push_back(death.ended->count());
        diedOfIt += death.signal != 0 && (death.signal == row.signal || death.signal == row.further) ? 1 : 0;
    }
    std::printf("| %s | SIG%s | %zu | %d | %s | %s |\n", row.title.c_str(), sigabbrev_np(row.signal), announced.size(),
                diedOfIt, describe(announced).c_str(), describe(ended).c_str());
    std::fflush(stdout);
}

} // namespace
} // namespace Corvane::Benchmark

int main(int argc, char** argv)
{
    using namespace Corvane::Benchmark;
    int rounds = 100;
    for (int i = 1; i < argc; ++i)
        rounds = std::strcmp(argv[i], "--quick") == 0 ? 1 : std::atoi(argv[i]);
    const RuntimeFolder runtime;
    std::printf(
        "| place | signal | announced | died of it | announced after ms: median | p99 | ended after ms: median | "
        "p99 |\n|---|---|---:|---:|---:|---:|---:|---:|\n");
    for (const Row& row : makeRows())
        printRow(row, rounds);
}
