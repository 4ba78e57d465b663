#pragma once

#include <MockDevice.h>
#include <chrono>
#include <corvane/input/MultiInputDriver.h>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

namespace Corvane::Benchmark
{

using Clock = std::chrono::steady_clock;

/// When the event that was written last arrived, told by the thread that read it.
class Arrival
{
public:
    void tell()
    {
        time = Clock::now();
        arrived.release();
    }
    Clock::time_point await()
    {
        arrived.acquire();
        return time;
    }

private:
    Clock::time_point time;
    std::binary_semaphore arrived{0};
};

/// Something that reads a device on a thread of its own.
class Reader
{
public:
    virtual ~Reader() = default;

    /// Presses and releases keys on the device, one after the other, and keeps how long each took to arrive.
    void measureRound(Test::MockDevice& device, int presses);
    /// @param share  0.5 for the median
    /// @return microseconds
    double getQuantile(double share) const;

protected:
    Arrival arrival;

private:
    std::vector<double> latencies;
};

/// The least that a reader does: a thread that sleeps in epoll_wait, and libevdev.
class BareReader : public Reader
{
public:
    explicit BareReader(const std::string& node);
    ~BareReader() override;

private:
    void run();

    const int device;
    const int stop;
    std::thread thread;
};

/// The input driver and a listener.
class DriverReader : public Reader, private virtual IWindowEvent::IInputEventListener
{
public:
    DriverReader();
    ~DriverReader() override;

private:
    int onInputEvent(const IWindowEvent::InputEvent& event) override;

    MultiInputDriver driver;
};

} // namespace Corvane::Benchmark
