#include <corvane/foundation/Mutex.h>
#include <corvane/foundation/Singleton.h>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

namespace Corvane::Test
{

TEST(MutexTest, KeepsTheNameItWasGiven)
{
    static const char NAME[] = "Test::mutex";
    const Mutex mutex(NAME, 0);

    EXPECT_EQ(mutex.getName(), NAME);
    EXPECT_STREQ(singletonMutex.getName(), "Singleton");
}

TEST(MutexTest, RefusesItsOwnThreadWhenItIsNotRecursive)
{
    Mutex mutex("Test::mutex", 0);
    ASSERT_TRUE(mutex.try_lock());

    EXPECT_FALSE(mutex.try_lock());
    mutex.unlock();
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
}

TEST(MutexTest, IsNotRecursiveUnlessAsked)
{
    Mutex mutex("Test::mutex");
    const std::lock_guard<Mutex> guard(mutex);

    EXPECT_FALSE(mutex.try_lock());
}

TEST(MutexTest, LetsItsOwnThreadInAgainWhenItIsRecursive)
{
    Mutex mutex("Test::mutex", 1);
    mutex.lock();
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();

    bool isFree = true;
    std::thread([&] { isFree = mutex.try_lock(); }).join();
    EXPECT_FALSE(isFree) << "one of the two locks was still held";
    mutex.unlock();
}

TEST(MutexTest, KeepsThreadsApart)
{
    Mutex mutex("Test::mutex", 0);
    long count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10000; ++n) {
                const std::lock_guard<Mutex> guard(mutex);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(count, 40000);
}

} // namespace Corvane::Test
