#include "ApplicationFixture.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <sys/resource.h>
#include <thread>

// The application on the real system: nothing is replaced in this program.

namespace Corvane::Test
{
namespace
{

using std::chrono::duration;
using std::chrono::steady_clock;

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The load of `work` in percent, as the application reports it and as this test measures it from within and from
/// without: what is right lies between the two, however busy the machine is.
struct Load {
    double reported;
    double atLeast;
    double atMost;
};

template <class Work>
Load measure(Application& application, Work work)
{
    const auto outerBegin = steady_clock::now();
    const double outerProcessor = processorSeconds();
    application.getRuntimeStatistics();
    const auto innerBegin = steady_clock::now();
    const double innerProcessor = processorSeconds();
    work();
    const double innerUsed = processorSeconds() - innerProcessor;
    const double innerTime = duration<double>(steady_clock::now() - innerBegin).count();
    const double reported = application.getRuntimeStatistics().getCpuLoad();
    const double outerUsed = processorSeconds() - outerProcessor;
    const double outerTime = duration<double>(steady_clock::now() - outerBegin).count();
    // The clock of the statistics is set by others now and then, hence the margin.
    constexpr double MARGIN = 3;
    return {reported, 100 * innerUsed / outerTime - MARGIN, 100 * outerUsed / innerTime + MARGIN};
}

TEST_F(ApplicationTest, LoadOfABusyLoopIsWhatTheLoopUses)
{
    TestApplication application;
    const auto load = measure(application, [] {
        for (const double end = processorSeconds() + 0.3; processorSeconds() < end;) {
        }
    });

    EXPECT_GE(load.reported, load.atLeast);
    EXPECT_LE(load.reported, load.atMost);
}

TEST_F(ApplicationTest, LoadOfAnIdleProcessIsNearNothing)
{
    TestApplication application;
    const auto load = measure(application, [] { std::this_thread::sleep_for(std::chrono::milliseconds(300)); });

    EXPECT_LE(load.reported, load.atMost);
}

TEST_F(ApplicationTest, LargestResidentSetIsTheSystems)
{
    TestApplication application;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);

    const auto reported = application.getRuntimeStatistics().getMaxResidentSet();
    EXPECT_GE(reported, static_cast<unsigned int>(usage.ru_maxrss));
    EXPECT_LE(reported, static_cast<unsigned int>(usage.ru_maxrss) * 2);
}

TEST_F(ApplicationTest, PriorityIsTheNiceValueOfTheProcess)
{
    TestApplication application;
    EXPECT_EQ(application.getPriority(), getpriority(PRIO_PROCESS, 0));

    const int nicer = std::min(application.getPriority() + 1, 19);
    EXPECT_EQ(application.setPriority(nicer), RETURN_SUCCESS);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), nicer);
    EXPECT_EQ(application.getPriority(), nicer);
}

} // namespace
} // namespace Corvane::Test
