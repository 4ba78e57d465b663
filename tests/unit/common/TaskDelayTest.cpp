#include <corvane/common/TaskDelay.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <support/Await.h>
#include <thread>

namespace Corvane::Test
{
namespace
{

using std::chrono::milliseconds;
using std::chrono::steady_clock;

steady_clock::duration timeOf(unsigned int delay)
{
    const auto begin = steady_clock::now();
    OS_TaskDelayMsec(delay);
    return steady_clock::now() - begin;
}

TEST(TaskDelay, LastsAtLeastAsLongAsItIsTold)
{
    EXPECT_GE(timeOf(30), milliseconds(30));
    EXPECT_GE(timeOf(1005), milliseconds(1005));
}

TEST(TaskDelay, ReturnsForNoTimeAtAll)
{
    EXPECT_LT(timeOf(0), milliseconds(10'000));
}

std::atomic<int> interruptions{0};

TEST(TaskDelay, IsNeitherCutShortNorLostBySignals)
{
    struct sigaction action = {};
    struct sigaction previous = {};
    action.sa_handler = [](int) { ++interruptions; };
    sigaction(SIGUSR1, &action, &previous);
    std::atomic<bool> over{false};
    const pthread_t sleeper = pthread_self();
    std::thread disturber([&] {
        while (!over)
            pthread_kill(sleeper, SIGUSR1);
    });
    // On a busy machine a whole delay may pass before the disturber gets its turn.
    const bool wasDisturbed = await([] {
        const int before = interruptions;
        EXPECT_GE(timeOf(100), milliseconds(100));
        return interruptions > before;
    });

    over = true;
    disturber.join();
    EXPECT_TRUE(wasDisturbed);
    sigaction(SIGUSR1, &previous, nullptr);
}

} // namespace
} // namespace Corvane::Test
