#include <corvane/Application.h>

#include <cstdint>
#include <sys/resource.h>
#include <sys/time.h>

namespace Corvane
{

namespace
{

/// Deliberate: 32 bits that wrap, here and in all that is computed from it; managers know the figure as it is. The
/// conversion comes first, so that it is the same number where `tv_sec` is wider.
std::uint32_t toMicroseconds(const timeval& time)
{
    return std::uint32_t(time.tv_sec) * 1000000u + std::uint32_t(time.tv_usec);
}

} // namespace

ILifecycleManagement::RuntimeStatistics Application::getRuntimeStatistics()
{
    timeval now{};
    gettimeofday(&now, nullptr);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const std::uint32_t cpuUs = toMicroseconds(usage.ru_utime) + toMicroseconds(usage.ru_stime);
    const std::uint32_t wallUs = toMicroseconds(now);
    // Deliberate: nothing guards the division. Two calls within one microsecond are a fault of the caller.
    const std::uint32_t load = (cpuUs - lastCpuTimeUs) * 100u / (wallUs - lastSampleTimeUs);
    lastSampleTimeUs = wallUs;
    lastCpuTimeUs = cpuUs;
    return {getProcessName(), getHostName(), 0, 0, load, static_cast<std::uint32_t>(usage.ru_maxrss), 0, 0};
}

} // namespace Corvane
