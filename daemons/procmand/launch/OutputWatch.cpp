#include "launch/OutputWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// How long the files are left alone after they were looked at, and how long during a burst. To look costs next to
/// nothing then: nearly all of the time goes into giving room back, and that is the same in large pieces and in small
/// ones.
constexpr int PAUSE_MS = 50;
constexpr int BURST_PAUSE_MS = 1;

} // namespace

OutputWatch::OutputWatch(const OutputFiles& files)
    : files(files), changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), end(eventfd(0, EFD_CLOEXEC))
{
    if (!end.isOpen() || inotify_add_watch(changes.get(), files.getFolder().c_str(), IN_MODIFY) < 0)
        throw std::system_error(errno, std::generic_category(), "cannot watch " + files.getFolder());
    thread = std::thread([this] { watch(); });
}

OutputWatch::~OutputWatch()
{
    eventfd_write(end.get(), 1);
    thread.join();
}

void OutputWatch::watch()
{
    files.trimAll();
    std::array<pollfd, 2> waits{pollfd{.fd = end.get(), .events = POLLIN, .revents = 0},
                                pollfd{.fd = changes.get(), .events = POLLIN, .revents = 0}};
    while (poll(waits.data(), 2, -1) < 0 || waits[0].revents == 0) {
        const bool isBurst = trimWritten();
        if (poll(waits.data(), 1, isBurst ? BURST_PAUSE_MS : PAUSE_MS) > 0)
            return;
    }
}

bool OutputWatch::trimWritten()
{
    std::uint64_t largest = 0;
    for (const std::string& name : readWritten())
        largest = std::max(largest, files.trim(name));
    return largest > 2 * OutputFiles::ROOM_LIMIT;
}

std::set<std::string> OutputWatch::readWritten() const
{
    std::set<std::string> names;
    alignas(inotify_event) char buffer[64 * 1024];
    // Once, not until there are no more: during a burst there are always more.
    const ssize_t size = read(changes.get(), buffer, sizeof buffer);
    for (const char* position = buffer; position < buffer + size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(position);
        if (event->len > 0)
            names.insert(event->name);
        else if ((event->mask & IN_Q_OVERFLOW) != 0)
            files.trimAll(); // so many were written to that the system has not counted them all
        position += sizeof(inotify_event) + event->len;
    }
    return names;
}

} // namespace Procmand
