#include "EndSignals.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace Corvanectl
{

EndSignals::EndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    descriptor = signalfd(-1, &signals, SFD_CLOEXEC);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "signalfd");
}

EndSignals::~EndSignals()
{
    close(descriptor);
}

void EndSignals::wait() const
{
    pollfd waited{.fd = descriptor, .events = POLLIN, .revents = 0};
    while (poll(&waited, 1, -1) < 0 && errno == EINTR) {
    }
}

void EndSignals::raise()
{
    kill(getpid(), SIGTERM);
}

} // namespace Corvanectl
