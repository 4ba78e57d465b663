#include "Readers.h"

#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Corvane::Benchmark
{

namespace
{

constexpr std::chrono::microseconds PAUSE{50};

void watch(int epoll, int descriptor)
{
    epoll_event event{.events = EPOLLIN, .data = {.fd = descriptor}};
    epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event);
}

} // namespace

double Reader::measureRound(const std::function<void()>& makeEvent, int events)
{
    Series latencies;
    for (int i = 0; i < events; ++i) {
        const Clock::time_point start = Clock::now();
        makeEvent();
        const Clock::time_point end = arrival.await();
        latencies.push_back(Microseconds(end - start).count());
        // The reader goes back to sleep, as between the movements of a person; the processor does not, for what it
        // takes to wake up differs from time to time.
        while (Clock::now() - end < PAUSE)
            std::this_thread::yield();
    }
    return median(latencies);
}

BareReader::BareReader(const std::string& node)
    : device(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)), stop(eventfd(0, EFD_CLOEXEC))
{
    if (device < 0)
        throw std::runtime_error("cannot open " + node);
    thread = std::thread([this] { run(); });
}

BareReader::~BareReader()
{
    eventfd_write(stop, 1);
    thread.join();
    close(stop);
    close(device);
}

void BareReader::run()
{
    libevdev* evdev = nullptr;
    if (libevdev_new_from_fd(device, &evdev) < 0)
        throw std::runtime_error("no input device");
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    watch(epoll, device);
    watch(epoll, stop);
    epoll_event ready{};
    while (epoll_wait(epoll, &ready, 1, -1) == 1 && ready.data.fd == device) {
        input_event event{};
        while (libevdev_next_event(evdev, LIBEVDEV_READ_FLAG_NORMAL, &event) == LIBEVDEV_READ_STATUS_SUCCESS)
            if (event.type == EV_SYN && event.code == SYN_REPORT)
                arrival.tell();
    }
    close(epoll);
    libevdev_free(evdev);
}

/// Tells when an event has come to it.
class DriverReader::ReceivingWindow : public Window
{
public:
    ReceivingWindow(int argc, char** argv, Arrival& arrival) : Window(argc, argv), arrival(arrival) {}

    bool handleEvent(const Event&) override
    {
        arrival.tell();
        return true;
    }
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "benchmark"; }

    static std::unique_ptr<Window> make(Arrival& arrival)
    {
        std::string words[] = {"benchmark", "--application-type=benchmark", "--authorization-token=benchmark"};
        char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
        return std::make_unique<ReceivingWindow>(3, arguments, arrival);
    }

private:
    Arrival& arrival;
};

DriverReader::DriverReader() : window(ReceivingWindow::make(arrival))
{
    driver.addInputEventListener(this, 0);
    driver.enableMouse();
    driver.start();
}

DriverReader::~DriverReader()
{
    driver.removeInputEventListener(this);
}

int DriverReader::onInputEvent(const IWindowEvent::InputEvent& event)
{
    window->handleEvent(event);
    return 0;
}

} // namespace Corvane::Benchmark

// In the place of the mock library's, which asks another thread before each read: that takes 180 us and hides what a
// reader takes. The node of a mock device is a pipe, and what is written to it can be read as it is.
extern "C" __attribute__((visibility("default"))) ssize_t read(int descriptor, void* buffer, std::size_t size)
{
    return syscall(SYS_read, descriptor, buffer, size);
}
