#include "Readers.h"

#include <Process.h>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace
{

using namespace Corvane;
using namespace Corvane::Benchmark;

constexpr int ROUNDS = 25;
constexpr int EVENTS = 200;
constexpr std::chrono::seconds IDLE_TIME{10};
constexpr std::chrono::seconds QUICK_IDLE_TIME{1};
/// Microseconds that the driver may take more than a bare reader.
constexpr double GOAL = 3;
/// Microseconds that two readers which do the same may seem to differ by.
constexpr double RESOLUTION = 1;

/// What the threads of the driver have used so far.
struct Usage {
    long sleeps = 0;    ///< how often one went to sleep, and so was woken
    long processor = 0; ///< nanoseconds
};

long readNumber(const std::filesystem::path& file, const std::string& field)
{
    std::ifstream stream(file);
    for (std::string word; stream >> word;) {
        long number = 0;
        if (word == field + ":" && stream >> number)
            return number;
    }
    return 0;
}

Usage readUsage()
{
    Usage usage;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        if (name != "InputDriver" && name != "InputReader")
            continue;
        long nanoseconds = 0;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        usage.processor += nanoseconds;
        usage.sleeps += readNumber(task.path() / "status", "voluntary_ctxt_switches") +
                        readNumber(task.path() / "status", "nonvoluntary_ctxt_switches");
    }
    return usage;
}

void awaitOpen(const Test::MockDevice& device)
{
    while (!device.isOpen())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::vector<Figure> measureLatency(const Options& options)
{
    Test::MockMachine machine;
    // The bare reader's device is one that the driver leaves alone.
    Test::DeviceSpecification likeAMouse = Test::mouse();
    likeAMouse.properties = {{"ID_INPUT", "1"}};
    Test::MockDevice bareDevice(machine, likeAMouse);
    Test::MockDevice twinDevice(machine, likeAMouse);
    Test::MockDevice mouse(machine, Test::mouse());
    BareReader bare(bareDevice.getNode());
    BareReader twin(twinDevice.getNode());
    DriverReader driver;
    awaitOpen(mouse);
    const auto move = [](Test::MockDevice& device) { return [&device] { device.report({{EV_REL, REL_X, 1}}); }; };
    const auto moved = std::make_shared<const IWindowEvent::MouseEvent>(IWindowEvent::MouseEvent::Buttons(),
                                                                        IWindowEvent::MouseEvent::Movement(1, 0, 0));
    const auto inject = [&] { driver.getDriver().injectInputEvent(moved, 0); };
    const std::vector<Series> series =
        takeTurns(options.rounds(ROUNDS), {[&] { return bare.measureRound(move(bareDevice), EVENTS); },
                                           [&] { return driver.measureRound(move(mouse), EVENTS); },
                                           [&] { return driver.measureRound(inject, EVENTS); },
                                           [&] { return twin.measureRound(move(twinDevice), EVENTS); }});
    Series differences;
    Series errors;
    for (std::size_t i = 0; i < series[0].size(); ++i) {
        differences.push_back(series[1][i] - series[0][i]);
        errors.push_back(std::abs(series[3][i] - series[0][i]));
    }
    return {compare("mouse moved to handleEvent", "us", series[1], series[0]),
            {.name = "of it more than a bare reader",
             .value = median(differences),
             .unit = "us",
             .goal = Goal::valueAtMost(GOAL)},
            {.name = "resolution: two bare readers, in nine of ten rounds",
             .value = quantile(errors, 0.9),
             .unit = "us",
             .goal = Goal::valueAtMost(RESOLUTION)},
            {.name = "event injected to handleEvent", .value = median(series[2]), .unit = "us"}};
}

/// A driver with everything enabled and open, on a machine where nothing happens.
std::vector<Figure> measureIdling(const Options& options)
{
    Test::MockMachine machine;
    Test::MockDevice mouse(machine, Test::mouse());
    Test::MockDevice keyboard(machine, Test::keyboard());
    Test::MockDevice remote(machine, Test::infrared());
    MultiInputDriver driver;
    driver.enableHotplug();
    driver.enableMouse();
    driver.enableKeyboard();
    driver.enableIr();
    driver.start();
    for (const Test::MockDevice* device : {&mouse, &keyboard, &remote})
        awaitOpen(*device);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const Usage before = readUsage();
    std::this_thread::sleep_for(options.isQuick ? QUICK_IDLE_TIME : IDLE_TIME);
    const Usage after = readUsage();
    return {{.name = "wake-ups of an idle driver", .value = double(after.sleeps - before.sleeps), .unit = ""},
            {.name = "processor of an idle driver", .value = double(after.processor - before.processor), .unit = "ns"}};
}

std::vector<Figure> measure(const Options& options)
{
    stayOnOneCore();
    std::vector<Figure> figures = measureLatency(options);
    for (Figure& figure : measureIdling(options))
        figures.push_back(std::move(figure));
    return figures;
}

} // namespace

int main(int argc, char** argv)
{
    return runBenchmark(
        argc, argv,
        "From the write into the node of a mock mouse to IWindow::handleEvent, against a bare libevdev reader of a "
        "mouse\n"
        "like it. Both read in this process, in turns, on one core; both read the node itself. The second way begins\n"
        "with injectInputEvent() of the driver. Then the driver idles for ten seconds.",
        measure);
}
