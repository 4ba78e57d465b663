#include <corvane/common/TaskDelay.h>

#include <cerrno>
#include <ctime>

namespace Corvane
{

void OS_TaskDelayMsec(unsigned int milliseconds)
{
    constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += static_cast<time_t>(milliseconds / 1000);
    end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (end.tv_nsec >= NANOSECONDS_PER_SECOND) {
        end.tv_nsec -= NANOSECONDS_PER_SECOND;
        ++end.tv_sec;
    }
    // An absolute end: a signal in between neither shortens the delay nor lengthens it.
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

} // namespace Corvane
