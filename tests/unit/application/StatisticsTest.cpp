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

TEST_F(Statistics, AreRightJustBeforeAtAndJustPastTheWrapOfTheWallClock)
{
    loadAt(WRAP - 101, 0);
    EXPECT_EQ(loadAt(WRAP - 1, 10), 10u);
    EXPECT_EQ(loadAt(WRAP, 11), 100u);
    EXPECT_EQ(loadAt(WRAP + 1, 12), 100u);
}

TEST_F(Statistics, AreRightJustBeforeAtAndJustPastTheWrapOfTheProcessorTime)
{
    loadAt(10 * SECOND, WRAP - 101);
    EXPECT_EQ(loadAt(10 * SECOND + 400, WRAP - 1), 25u);
    EXPECT_EQ(loadAt(10 * SECOND + 404, WRAP), 25u);
    EXPECT_EQ(loadAt(10 * SECOND + 408, WRAP + 1), 25u);
}

TEST_F(Statistics, AreRightWhereBothClocksWrapAtOnce)
{
    loadAt(WRAP - 4, WRAP - 1);
    EXPECT_EQ(loadAt(WRAP, WRAP), 25u);
    EXPECT_EQ(loadAt(WRAP + 1, WRAP + 1), 100u);
}

// Half the range: where a product or a sum that was computed with a sign would leave it.
TEST_F(Statistics, AreRightWhereASignedNumberWouldOverflow)
{
    constexpr std::uint64_t HALF = WRAP / 2;
    loadAt(HALF - 4, HALF / 2, HALF / 2 - 1);
    EXPECT_EQ(loadAt(HALF, HALF / 2, HALF / 2), 25u);
    EXPECT_EQ(loadAt(HALF + 4, HALF / 2 + 1, HALF / 2 + 1), 50u);
    // The product: 21.47 s of processor time.
    EXPECT_EQ(loadAt(HALF + 4 + 21'474'837, HALF + 2 + 21'474'837), 100u);
}

TEST_F(Statistics, AreRightToTheLastSecondOfA32BitTime)
{
    constexpr std::uint64_t LAST = std::uint64_t{0x7FFFFFFF} * SECOND;
    loadAt(LAST - SECOND, LAST - SECOND / 2);
    EXPECT_EQ(loadAt(LAST + 999'999, LAST + 500'000), 50u);
}

TEST_F(Statistics, AreOfWhatIsLeftOfAnIntervalBeyondTheRange)
{
    loadAt(10 * SECOND, 0);
    // The longest intervals of 71.6 minutes; exactly 2^32 microseconds would divide by zero.
    EXPECT_EQ(loadAt(10 * SECOND + WRAP - 96, 42'949'672), 1u) << "4,294,967,200 of 4,294,967,200";
    EXPECT_EQ(loadAt(10 * SECOND + 2 * WRAP - 97, 2 * 42'949'672), 0u) << "4,294,967,200 of 4,294,967,295";
    EXPECT_EQ(loadAt(10 * SECOND + 3 * WRAP - 96, 2 * 42'949'672 + 7), 700u) << "700 of 1";
}

TEST_F(Statistics, WrapTheProductWhereBothClocksWrapToo)
{
    loadAt(WRAP - SECOND, WRAP - SECOND);
    EXPECT_EQ(loadAt(WRAP + 49 * SECOND, WRAP - SECOND + 42'949'672), 85u);
    loadAt(2 * WRAP - 1, 2 * WRAP - SECOND);
    EXPECT_EQ(loadAt(2 * WRAP + 1, 2 * WRAP - SECOND + 42'949'673), 2u) << "4,294,967,300 is 4, of 2";
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
