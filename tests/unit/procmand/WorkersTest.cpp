#include "box/Workers.h"

#include <atomic>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <latch>
#include <pthread.h>
#include <stdexcept>
#include <system_error>

namespace
{

constexpr int UNLIMITED = -1;
/// How many threads the system has left.
std::atomic<int> threadsLeft{UNLIMITED};

} // namespace

/// In the place of the C library's, which it calls while there are threads left.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument)
{
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    if (threadsLeft == 0)
        return EAGAIN;
    if (threadsLeft > 0)
        --threadsLeft;
    return next(thread, attributes, routine, argument);
}

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

TEST(Workers, RunMoreJobsThanTheyHaveThreads)
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

TEST(Workers, GoOnWhateverAJobThrows)
{
    std::atomic<int> done{0};
    Workers workers(1);
    workers.run([] { throw std::runtime_error("a test's"); });
    workers.run([] { throw 1; });
    workers.run([&] { ++done; });
    workers.finish();

    EXPECT_EQ(done, 1);
}

TEST(Workers, MakeDoWithTheThreadsThatTheSystemHas)
{
    std::atomic<int> done{0};
    threadsLeft = 2;
    Workers workers(8);
    threadsLeft = UNLIMITED;
    for (int i = 0; i < 10; ++i)
        workers.run([&] { ++done; });
    workers.finish();

    EXPECT_EQ(done, 10);
}

TEST(Workers, SayWhenTheSystemHasNoThreadAtAll)
{
    threadsLeft = 0;
    EXPECT_THROW(Workers(8), std::system_error);
    threadsLeft = UNLIMITED;
}

TEST(Workers, NeedNoThreadLater)
{
    std::atomic<int> done{0};
    Workers workers(2);
    threadsLeft = 0;
    for (int i = 0; i < 10; ++i)
        workers.run([&] { ++done; });
    workers.finish();
    threadsLeft = UNLIMITED;

    EXPECT_EQ(done, 10);
}

} // namespace Procmand
