#pragma once

#include <atomic>
#include <corvane/foundation/Export.h>
#include <pthread.h>

namespace Corvane
{

/// An object with a thread of its own.
///
/// A derived class gives the thread's body, `thread()`, which returns soon after `isStopRequested()` has become true;
/// its destructor calls `exit()`, so that the body never runs on a half-destroyed object. The thread handles no
/// asynchronous signals (SIGTERM and the like): those belong to the application's own threads.
///
/// `init()` and `exit()` belong to the owner's thread. Destruction asks the thread to stop and joins it.
class CORVANE_EXPORT ActiveObject
{
public:
    /// @param name  static text; its first 15 characters name the thread
    explicit ActiveObject(const char* name);
    ActiveObject(const ActiveObject&) = delete;
    ActiveObject& operator=(const ActiveObject&) = delete;

    /// Starts the thread; without effect while it runs.
    /// @throws Exception  code 7 when the system refuses a thread
    virtual void init();
    virtual ~ActiveObject();
    /// The body. @return a number without meaning to the library
    virtual int thread() = 0;
    /// Asks the thread to stop and waits until it has; without effect when none runs. Called on the thread itself it
    /// asks only. `init()` may follow.
    virtual void exit();

protected:
    /// Thread-safe.
    bool isStopRequested() const;

private:
    static void* run(void* self);
    void stop();

    const char* const name;
    pthread_t handle{};
    bool started = false; ///< and not joined
    std::atomic<bool> running{false};
    std::atomic<bool> stopRequested{false};
};

} // namespace Corvane
