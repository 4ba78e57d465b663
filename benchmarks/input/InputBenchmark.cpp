#include "Readers.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{

using namespace Corvane;
using namespace Corvane::Benchmark;

constexpr int ROUNDS = 15;
constexpr int PRESSES = 100;
constexpr std::chrono::seconds IDLE_TIME{10};

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
        if (name != "InputDriver")
            continue;
        long nanoseconds = 0;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        usage.processor += nanoseconds;
        usage.sleeps += readNumber(task.path() / "status", "voluntary_ctxt_switches") +
                        readNumber(task.path() / "status", "nonvoluntary_ctxt_switches");
    }
    return usage;
}

void measureLatency()
{
    Test::MockMachine machine;
    // The bare reader's device is a like one that the driver leaves alone.
    Test::DeviceSpecification likeTheRemote = Test::infrared();
    likeTheRemote.isReceiver = false;
    likeTheRemote.properties = {{"ID_INPUT", "1"}};
    Test::MockDevice bareDevice(machine, likeTheRemote);
    Test::MockDevice remote(machine, Test::infrared());
    BareReader bare(bareDevice.getNode());
    DriverReader driver;
    const auto takeTurns = [&](int presses) {
        bare.measureRound(bareDevice, presses);
        driver.measureRound(remote, presses);
    };
    for (int i = 0; i < ROUNDS; ++i)
        takeTurns(PRESSES);
    const double medians[] = {bare.getQuantile(0.5), driver.getQuantile(0.5)};
    const double tails[] = {bare.getQuantile(0.99), driver.getQuantile(0.99)};
    std::printf("reader  median us   p99 us\nbare    %9.1f  %7.1f\ndriver  %9.1f  %7.1f\nratio   %9.2f  %7.2f\n",
                medians[0], tails[0], medians[1], tails[1], medians[1] / medians[0], tails[1] / tails[0]);
}

/// A driver with everything enabled and open, on a machine where nothing happens.
void measureIdling()
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
    while (!mouse.isOpen() || !keyboard.isOpen() || !remote.isOpen())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const Usage before = readUsage();
    std::this_thread::sleep_for(IDLE_TIME);
    const Usage after = readUsage();
    std::printf("idle    %ld wake-ups and %ld ns of processor in %ld s\n", after.sleeps - before.sleeps,
                after.processor - before.processor, static_cast<long>(IDLE_TIME.count()));
}

} // namespace

int main(int argc, char**)
{
    if (argc > 1) {
        std::puts("benchmark-input: from the write into a mock device to the listener, against a bare libevdev reader "
                  "of a device like it.\nBoth read in this process, in turns; then the driver idles for ten seconds.");
        return 0;
    }
    measureLatency();
    measureIdling();
    return 0;
}
