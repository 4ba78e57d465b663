#include "FakeSystem.h"

#include <cerrno>
#include <corvane/common/PlatformHelper.h>
#include <corvane/common/TaskDelay.h>
#include <dlfcn.h>
#include <pthread.h>

namespace Corvane
{

namespace Test
{

namespace
{

std::atomic<FakeSystem*> current{nullptr};

} // namespace

FakeSystem::FakeSystem()
{
    current = this;
}

FakeSystem::~FakeSystem()
{
    current = nullptr;
}

} // namespace Test

void OS_TaskDelayMsec(unsigned int milliseconds)
{
    Test::current.load()->onDelay(milliseconds);
}

void PlatformHelper::startHelper() noexcept
{
    if (Test::FakeSystem* system = Test::current)
        ++system->startedHelpers;
}

} // namespace Corvane

using Corvane::Test::current;

extern "C" {

CORVANE_EXPORT int pthread_join(pthread_t thread, void** result)
{
    using Join = int (*)(pthread_t, void**);
    static const Join REAL_JOIN = reinterpret_cast<Join>(dlsym(RTLD_NEXT, "pthread_join"));
    if (Corvane::Test::FakeSystem* system = current)
        ++system->joins;
    return REAL_JOIN(thread, result);
}

CORVANE_EXPORT int gettimeofday(timeval* __restrict time, void* __restrict) noexcept
{
    *time = current.load()->wallClock;
    return 0;
}

CORVANE_EXPORT int getrusage(__rusage_who_t who, rusage* usage) noexcept
{
    current.load()->usageOf = who;
    *usage = current.load()->usage;
    return 0;
}

// As the system's: the value may be -1 of a success, so errno alone tells a failure, and a success leaves it alone.
CORVANE_EXPORT int getpriority(__priority_which_t which, id_t who) noexcept
{
    Corvane::Test::FakeSystem& system = *current;
    system.priorityQueries.push_back({static_cast<int>(which), who, 0});
    if (system.priorityError == 0)
        return system.priority;
    errno = system.priorityError;
    return -1;
}

CORVANE_EXPORT int setpriority(__priority_which_t which, id_t who, int value) noexcept
{
    Corvane::Test::FakeSystem& system = *current;
    system.priorityChanges.push_back({static_cast<int>(which), who, value});
    errno = system.priorityError;
    return system.priorityError == 0 ? 0 : -1;
}
}
