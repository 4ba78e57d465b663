#include "ApplicationFixture.h"
#include "FakeSystem.h"

#include <cstdint>

namespace Corvane::Test
{
namespace
{

constexpr std::uint64_t SECOND = 1'000'000;
constexpr std::uint64_t WRAP = std::uint64_t(1) << 32;

timeval toTime(std::uint64_t microseconds)
{
    timeval time{};
    time.tv_sec = static_cast<time_t>(microseconds / SECOND);
    time.tv_usec = static_cast<suseconds_t>(microseconds % SECOND);
    return time;
}

class Statistics : public ApplicationTest
{
protected:
    /// The load that is reported when the clock and the processor time stand like this, in microseconds.
    unsigned int loadAt(std::uint64_t wall, std::uint64_t user, std::uint64_t system = 0)
    {
        fake.wallClock = toTime(wall);
        fake.usage.ru_utime = toTime(user);
        fake.usage.ru_stime = toTime(system);
        return application.getRuntimeStatistics().getCpuLoad();
    }

    ScopedEnvironment host{"CORVANE_APP_HOSTNAME", "box-17"};
    FakeSystem fake;
    TestApplication application;
};

TEST_F(Statistics, HoldProcessHostLoadAndLargestResidentSet)
{
    loadAt(10 * SECOND, 0);
    fake.usage.ru_maxrss = 4321;
    fake.wallClock = toTime(12 * SECOND);
    fake.usage.ru_utime = toTime(SECOND / 2);

    const auto statistics = application.getRuntimeStatistics();

    EXPECT_EQ(statistics.serialize(),
              ILifecycleManagement::RuntimeStatistics("/usr/bin/QAX", "box-17", 0, 0, 25, 4321, 0, 0).serialize());
    EXPECT_EQ(statistics.getMaxResidentSet(), 4321u);
    EXPECT_EQ(fake.usageOf, RUSAGE_SELF);
}

TEST_F(Statistics, AddUserAndSystemTime)
{
    loadAt(10 * SECOND, 3 * SECOND + 700'000, 2 * SECOND + 600'000);
    EXPECT_EQ(loadAt(20 * SECOND, 5 * SECOND + 900'000, 3 * SECOND + 200'000), 28u);
}

TEST_F(Statistics, CoverTheTimeSinceThePreviousCall)
{
    loadAt(10 * SECOND, 0);
    EXPECT_EQ(loadAt(11 * SECOND, SECOND), 100u);
    EXPECT_EQ(loadAt(12 * SECOND, SECOND), 0u);
    EXPECT_EQ(loadAt(13 * SECOND, SECOND + SECOND / 2), 50u);
    EXPECT_EQ(loadAt(14 * SECOND, 3 * SECOND + SECOND / 2), 200u) << "two threads on two processors";
}

TEST_F(Statistics, AreRoundedDown)
{
    loadAt(10 * SECOND, 0);
    EXPECT_EQ(loadAt(10 * SECOND + 1'000'000, 999'999), 99u);
    EXPECT_EQ(loadAt(10 * SECOND + 1'000'003, 999'999 + 1), 33u);
}

TEST_F(Statistics, AreOfTheWholeTimeAtTheFirstCall)
{
    EXPECT_EQ(loadAt(10 * SECOND, 4 * SECOND), 40u);
}

TEST_F(Statistics, AreRightAcrossAWrapOfTheClocks)
{
    loadAt(WRAP - SECOND / 2, 0);
    EXPECT_EQ(loadAt(WRAP + SECOND / 2, SECOND / 4), 25u);

    loadAt(7 * WRAP - 1, 3 * WRAP - 1);
    EXPECT_EQ(loadAt(7 * WRAP + 3, 3 * WRAP + 1), 50u);
}

TEST_F(Statistics, WrapWhereUserAndSystemTimeTogetherPassTheEnd)
{
    loadAt(10 * SECOND, WRAP - 1, 1);
    EXPECT_EQ(loadAt(11 * SECOND, WRAP - 1, SECOND / 2 + 1), 50u);
}

TEST_F(Statistics, WrapTheProductOfLongProcessorTimes)
{
    loadAt(SECOND, 0);
    // 42.949672 s times 100 still fits into 32 bits.
    EXPECT_EQ(loadAt(SECOND + 50 * SECOND, 42'949'672), 85u);
    // One microsecond more and it does not: 4,294,967,300 wraps to 4.
    EXPECT_EQ(loadAt(SECOND + 100 * SECOND, 2 * 42'949'672 + 1), 0u);
    EXPECT_EQ(loadAt(SECOND + 100 * SECOND + 4, 3 * 42'949'672 + 2), 1u);
}

TEST_F(Statistics, WrapTheClockOfToday)
{
    const std::uint64_t today = 1'795'000'000 * SECOND;
    loadAt(today, 100 * SECOND);
    EXPECT_EQ(loadAt(today + 4 * SECOND, 101 * SECOND), 25u);
}

} // namespace
} // namespace Corvane::Test
