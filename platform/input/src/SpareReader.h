#pragma once

#include <atomic>
#include <corvane/common/ActiveObject.h>
#include <corvane/common/FileDescriptor.h>
#include <functional>
#include <mutex>

namespace Corvane
{

/// The thread that reads the devices while the driver's thread is in a listener.
///
/// The kernel keeps some dozens of events for a reader and drops the rest. A listener may take longer than that lasts,
/// and the thread that is in it cannot read; so another one has to. It reads only while the devices are lent to it:
/// otherwise it sleeps, and an event makes its way to a listener that is quick without a change of threads.
///
/// Its operations belong to the driver's thread, but for start().
class SpareReader : private ActiveObject
{
public:
    /// Reads what is there without blocking. @return false when it must not be called again before the next lend()
    using Step = std::function<bool()>;

    /// @param descriptor  an epoll of the devices: readable when there is something to read
    /// @throws Exception  code 7 when the system refuses a descriptor
    SpareReader(int descriptor, Step step);
    ~SpareReader() override;

    /// Starts the thread; without effect when it runs already. Not synchronised.
    /// @throws Exception  code 7 when the system refuses a thread
    void start();

    /// From here to takeBack() the devices are the spare thread's.
    void lend();
    /// Waits for a step that runs.
    void takeBack();

private:
    int thread() override;
    void listen(bool toDevices) const;

    const int devices;
    const Step step;
    const FileDescriptor stop; ///< an eventfd: readable when the thread is to end
    const FileDescriptor epoll;
    std::atomic<bool> isLent{false};
    std::mutex mutex; ///< held during a step
};

} // namespace Corvane
