#include "box/Workers.h"

#include <gtest/gtest.h>
#include <latch>

namespace Procmand
{

TEST(Workers, RunJobsThatWaitForEachOther)
{
    std::latch all(8); // before the workers: the last thread to leave it may be one of theirs
    Workers workers(8);
    for (int i = 0; i < 7; ++i)
        workers.run([&] { all.arrive_and_wait(); });
    all.arrive_and_wait(); // would wait for ever if two of them had to share a thread
}

TEST(Workers, RunMoreJobsThanTheyMayHaveThreads)
{
    std::atomic<int> done{0};
    Workers workers(2);
    for (int i = 0; i < 1000; ++i)
        workers.run([&] { ++done; });
    workers.finish();

    EXPECT_EQ(done, 1000);
}

TEST(Workers, FinishWhatIsLeftAndTakeNothingMore)
{
    std::atomic<int> done{0};
    std::latch begun(2);
    Workers workers(1);
    workers.run([&] {
        begun.arrive_and_wait();
        ++done;
    });
    workers.run([&] { ++done; });
    begun.arrive_and_wait();
    workers.finish();
    EXPECT_EQ(done, 2);

    workers.run([&] { ++done; });
    workers.finish();
    EXPECT_EQ(done, 2);
}

TEST(Workers, LetGoOfWhatAJobOwnsWithoutHoldingTheOthersUp)
{
    struct Slow {
        std::latch& other;
        explicit Slow(std::latch& other) : other(other) {}
        ~Slow() { other.wait(); }
    };
    std::latch other(1);
    Workers workers(2);
    workers.run([slow = std::make_shared<Slow>(other)] {});
    workers.run([&] { other.count_down(); });
    workers.finish();
}

} // namespace Procmand
