#include "SpareReader.h"

#include "WakeUp.h"

#include <cerrno>
#include <corvane/Foundation.h>
#include <cstring>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <utility>

namespace Corvane
{

SpareReader::SpareReader(int descriptor, Step step)
    : ActiveObject("InputReader"),
      devices(descriptor),
      step(std::move(step)),
      stop(createWakeUp()),
      epoll(epoll_create1(EPOLL_CLOEXEC))
{
    if (!epoll.isOpen()) {
        corvaneDebugPrint(DEBUG_ERROR, "MultiInputDriver", "SpareReader", __LINE__, "epoll_create1 failed %s",
                          std::strerror(errno));
        throw Exception(RETURN_REFUSED_BY_SYSTEM);
    }
    epoll_event event{.events = EPOLLIN, .data = {}};
    epoll_ctl(epoll.get(), EPOLL_CTL_ADD, stop.get(), &event);
    event.events = 0;
    epoll_ctl(epoll.get(), EPOLL_CTL_ADD, devices, &event);
}

SpareReader::~SpareReader()
{
    eventfd_write(stop.get(), 1);
    exit();
}

void SpareReader::start()
{
    init();
}

void SpareReader::lend()
{
    isLent = true;
    listen(true);
}

void SpareReader::takeBack()
{
    isLent = false;
    listen(false);
    // A step that runs has the last word; the next one sees that the devices are not lent any more.
    const std::lock_guard guard(mutex);
}

void SpareReader::listen(bool toDevices) const
{
    epoll_event event{.events = toDevices ? std::uint32_t{EPOLLIN} : 0U, .data = {}};
    epoll_ctl(epoll.get(), EPOLL_CTL_MOD, devices, &event);
}

int SpareReader::thread()
{
    while (!isStopRequested()) {
        epoll_event event{};
        epoll_wait(epoll.get(), &event, 1, -1);
        const std::lock_guard guard(mutex);
        if (isLent && !step())
            listen(false);
    }
    return 0;
}

} // namespace Corvane
