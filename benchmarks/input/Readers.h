#pragma once

#include <MockDevice.h>
#include <Rounds.h>
#include <corvane/Window.h>
#include <corvane/input/MultiInputDriver.h>
#include <functional>
#include <semaphore>
#include <string>
#include <thread>

namespace Corvane::Benchmark
{

/// When the event that was made last arrived, told by the thread that got it.
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

/// Something that gets events on a thread of its own.
class Reader
{
public:
    virtual ~Reader() = default;

    /// Makes events one after the other. @return microseconds until one arrives, the median
    double measureRound(const std::function<void()>& makeEvent, int events);

protected:
    Arrival arrival;
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

/// The input driver, and a window that it hands its events to as WindowExec does.
class DriverReader : public Reader, private virtual IWindowEvent::IInputEventListener
{
public:
    DriverReader();
    ~DriverReader() override;

    MultiInputDriver& getDriver() { return driver; }

private:
    class ReceivingWindow;

    int onInputEvent(const IWindowEvent::InputEvent& event) override;

    const std::unique_ptr<Window> window;
    MultiInputDriver driver;
};

} // namespace Corvane::Benchmark
