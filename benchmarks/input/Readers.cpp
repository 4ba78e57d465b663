#include "Readers.h"

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Corvane::Benchmark
{

namespace
{

void watch(int epoll, int descriptor)
{
    epoll_event event{.events = EPOLLIN, .data = {.fd = descriptor}};
    epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event);
}

} // namespace

void Reader::measureRound(Test::MockDevice& device, int presses)
{
    for (int i = 0; i < 2 * presses; ++i) {
        const Clock::time_point start = Clock::now();
        if (i % 2 == 0)
            device.press(KEY_OK);
        else
            device.release(KEY_OK);
        const std::chrono::duration<double, std::micro> duration = arrival.await() - start;
        latencies.push_back(duration.count());
        // The reader goes back to sleep, as between the keys of a person.
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

double Reader::getQuantile(double share) const
{
    std::vector<double> sorted = latencies;
    std::sort(sorted.begin(), sorted.end());
    return sorted.at(static_cast<std::size_t>(std::floor(share * static_cast<double>(sorted.size() - 1))));
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
            if (event.type == EV_KEY)
                arrival.tell();
    }
    close(epoll);
    libevdev_free(evdev);
}

DriverReader::DriverReader()
{
    driver.addInputEventListener(this, 0);
    driver.enableIr();
    driver.start();
}

DriverReader::~DriverReader()
{
    driver.removeInputEventListener(this);
}

int DriverReader::onInputEvent(const IWindowEvent::InputEvent&)
{
    arrival.tell();
    return 0;
}

} // namespace Corvane::Benchmark
