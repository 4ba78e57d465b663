#pragma once

namespace Corvanectl
{

/// The signals that end a command which runs until it is interrupted. They stay blocked in every thread, and wait in a
/// descriptor.
class EndSignals
{
public:
    /// Before other threads are started.
    EndSignals();
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    /// @return a descriptor that is readable when such a signal has come
    int getDescriptor() const { return descriptor; }
    /// Waits for one.
    void wait() const;
    /// Sends one to this process.
    static void raise();

private:
    int descriptor;
};

} // namespace Corvanectl
