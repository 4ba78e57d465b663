#include "NodeWatch.h"

#include <array>
#include <climits>
#include <sys/inotify.h>
#include <unistd.h>

namespace Corvane
{

bool NodeWatch::start(const std::string& folder)
{
    if (inotify.isOpen())
        return false;
    inotify.reset(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (inotify_add_watch(inotify.get(), folder.c_str(), IN_ATTRIB | IN_CREATE | IN_MOVED_TO) < 0)
        inotify.reset();
    return inotify.isOpen();
}

void NodeWatch::take() const
{
    std::array<char, sizeof(inotify_event) + NAME_MAX + 1> heard{};
    while (read(inotify.get(), heard.data(), heard.size()) > 0) {
    }
}

} // namespace Corvane
