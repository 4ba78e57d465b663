#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>
#include <atomic>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <thread>

namespace
{

using namespace Corvane::Benchmark;

constexpr int ROUNDS = 15;
constexpr int CLIENTS = 8;
constexpr std::chrono::milliseconds BEGINNING{50};
constexpr std::chrono::milliseconds OBSERVATION{300};

/// Calls that the client processes have made; in memory that they share.
class Counter
{
public:
    Counter() : memory(mmap(nullptr, sizeof(Number), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        if (memory == MAP_FAILED)
            throw std::runtime_error("no shared memory");
        new (memory) Number(0);
    }
    ~Counter() { munmap(memory, sizeof(Number)); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    std::atomic<long>& get() const { return *static_cast<Number*>(memory); }

private:
    using Number = std::atomic<long>;
    void* const memory;
};

/// @return calls a second of all clients together
double countCalls(const std::string& path)
{
    const Counter counter;
    std::vector<Process> clients;
    for (int i = 0; i < CLIENTS; ++i)
        clients.emplace_back([&] {
            for (Connection connection(path);; ++counter.get())
                connection.call();
        });
    std::this_thread::sleep_for(BEGINNING);
    const Clock::time_point start = Clock::now();
    const long before = counter.get();
    std::this_thread::sleep_for(OBSERVATION);
    const std::chrono::duration<double> time = Clock::now() - start;
    return static_cast<double>(counter.get() - before) / time.count();
}

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    const RuntimeFolder folder;
    const Server bare = startBareServer(folder);
    const Server window = startWindowServer();
    const std::vector<Series> series = takeTurns(
        options.rounds(ROUNDS), {[&] { return countCalls(bare.path); }, [&] { return countCalls(window.path); }});
    return {compare("calls a second of 8 clients", "1/s", series[1], series[0], Goal::ratioAtLeast(0.92))};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(argc, argv,
                        "How many calls of IWindow::setOpacity 8 clients make in a second, each a process, against a "
                        "bare server. One core.",
                        measure);
}
