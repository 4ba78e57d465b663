#pragma once

#include <corvane/foundation/Export.h>
#include <pthread.h>

namespace Corvane
{

/// A named mutual-exclusion lock that works with `std::lock_guard` and `std::unique_lock`.
///
/// Thread-safe. A Mutex must not be locked when it is destroyed.
///
///     Mutex mutex("Settings::mutex", 0);
///     std::lock_guard<Mutex> guard(mutex);
class CORVANE_EXPORT Mutex
{
public:
    /// @param name       static text, not copied; seen in a debugger
    /// @param recursive  0: a thread that locks twice dead-locks; any other value: it may lock again
    explicit Mutex(const char* name, int recursive = 0);
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    bool try_lock();
    void unlock();
    const char* getName() const;

private:
    const char* name;
    pthread_mutex_t mutex;
};

} // namespace Corvane
