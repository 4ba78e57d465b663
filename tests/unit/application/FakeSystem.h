#pragma once

#include <atomic>
#include <functional>
#include <sys/resource.h>
#include <sys/time.h>
#include <vector>

namespace Corvane::Test
{

/// The system that the application under test sees while this object lives: delays pass at once, answers are the
/// test's. The test program defines the functions in question itself; its definition wins over a library's.
struct FakeSystem {
    FakeSystem();
    ~FakeSystem();
    FakeSystem(const FakeSystem&) = delete;
    FakeSystem& operator=(const FakeSystem&) = delete;

    /// Called instead of a delay, on the thread that waits.
    std::function<void(unsigned int milliseconds)> onDelay = [](unsigned int) {};
    std::atomic<int> joins{0}; ///< calls of pthread_join that have begun
    std::atomic<int> startedHelpers{0};

    timeval wallClock{};
    rusage usage{};
    int usageOf = -12345; ///< whose usage was asked for

    struct PriorityCall {
        int which;
        unsigned int who;
        int value; ///< 0 of a query
        bool operator==(const PriorityCall&) const = default;
    };
    std::vector<PriorityCall> priorityChanges;
    std::vector<PriorityCall> priorityQueries;
    int priority = 0;
    int priorityError = 0; ///< errno of the next call of either kind, 0: success
};

} // namespace Corvane::Test
