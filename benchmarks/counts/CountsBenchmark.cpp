#include "Counters.h"

#include <Connection.h>
#include <Rounds.h>
#include <Servers.h>

namespace
{

using namespace Corvane::Benchmark;

constexpr int CALLS = 500;
constexpr int SUBSCRIBERS = 10;

void makeCalls(Connection& caller, std::vector<Connection>& subscribers, int count)
{
    for (int i = 0; i < count; ++i) {
        caller.call();
        for (Connection& subscriber : subscribers)
            subscriber.takeNotification();
    }
}

/// What a call takes with and without subscribers, and what each of these adds.
struct Work {
    Counts call;
    Counts notification;
};

/// @param Counters  how the server is started and what is counted in it
template <class Counters>
Work count()
{
    const RuntimeFolder folder;
    Counters counters(folder);
    Connection caller(findWindowSocket());
    std::vector<Connection> subscribers;
    const auto countCalls = [&] {
        makeCalls(caller, subscribers, CALLS); // what is done once only is done now
        counters.begin();
        makeCalls(caller, subscribers, CALLS);
        return counters.end() / CALLS;
    };
    const Counts without = countCalls();
    for (Connection& subscriber : subscribe(findWindowSocket(), SUBSCRIBERS))
        subscribers.push_back(std::move(subscriber));
    return {without, (countCalls() - without) / SUBSCRIBERS};
}

std::vector<Figure> measure(const Options&)
{
    const Work executed = count<InstructionCounter>();
    const Work allocated = count<AllocationCounter>();
    return {{"instructions of a call", executed.call.instructions, "", 0, 0, Goal::valueAtMost(7500)},
            {"system calls of a call", executed.call.systemCalls, "", 0, 0, Goal::valueAtMost(3)},
            {"allocations of a call", allocated.call.allocations, "", 0, 0, Goal::valueAtMost(2)},
            {"instructions of a notification", executed.notification.instructions, ""},
            {"system calls of a notification", executed.notification.systemCalls, "", 0, 0, Goal::valueAtMost(1)},
            {"allocations of a notification", allocated.notification.allocations, ""}};
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "How many instructions, system calls and allocations a call of IWindow::setOpacity is for the window, and how\n"
        "many more for each subscriber. Callgrind counts the first two: the machine's mood is not in them.",
        measure);
}
