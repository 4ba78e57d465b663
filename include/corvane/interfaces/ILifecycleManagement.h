#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialObject.h>
#include <corvane/interfaces/IListener.h>
#include <string>

namespace Corvane
{

/// The lifecycle of a process: its states, and who hears of them.
class CORVANE_EXPORT ILifecycleManagement
{
public:
    /// The most bytes of a state that may be set while other threads read it.
    static constexpr unsigned int LONGEST_STATE = 255;

    /// The lifecycle states. States are compared as texts, and their texts have at most 15 characters: a string that
    /// short is copied without allocating memory, also where a fatal signal is announced.
    static const std::string STATE_UNINITIALIZED;
    static const std::string STATE_LOADING;
    static const std::string STATE_RUNNING;
    static const std::string STATE_SUSPENDING;
    static const std::string STATE_SUSPENDED;
    static const std::string STATE_RESUMING;
    static const std::string STATE_TERMINATING;
    static const std::string STATE_TERMINATED;
    static const std::string STATE_ABORTED;
    static const std::string STATE_RUNAWAY;

    /// @return whether an application in this state is gone for good: TERMINATED, ABORTED or RUNAWAY
    static bool isApplicationTerminated(const std::string& state);

    class RuntimeStatistics;

    /// Hears that a process is alive, and of every change of its state.
    class CORVANE_EXPORT ILifecycleManagementListener : public virtual IListener
    {
    public:
        /// @param uid    id of the application
        /// @param state  its current state
        virtual void onKeepAlive(const std::string& uid, const std::string& state) = 0;
        virtual void onStateChange(const std::string& uid, const std::string& oldState,
                                   const std::string& newState) = 0;
    };

    virtual ~ILifecycleManagement() = default;
};

/// What a process has used so far.
class CORVANE_EXPORT ILifecycleManagement::RuntimeStatistics : public SerialObject
{
public:
    RuntimeStatistics() = default;
    /// The reserved values are 0 in every message of today; they keep the form of the record.
    /// @param cpuLoad         use of one processor since the previous record, in percent
    /// @param maxResidentSet  largest resident set so far, in kilobytes
    RuntimeStatistics(std::string processName, std::string hostName, unsigned int reserved0, unsigned int reserved1,
                      unsigned int cpuLoad, unsigned int maxResidentSet, unsigned int reserved2,
                      unsigned int reserved3);
    /// Reads the deserializer's current object.
    explicit RuntimeStatistics(Deserializer& deserializer);

    const std::string& getProcessName() const { return processName; }
    const std::string& getHostName() const { return hostName; }
    unsigned int getCpuLoad() const { return cpuLoad; }
    unsigned int getMaxResidentSet() const { return maxResidentSet; }

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~RuntimeStatistics() override;

private:
    std::string processName;
    std::string hostName;
    unsigned int reserved0{};
    unsigned int reserved1{};
    unsigned int cpuLoad{};
    unsigned int maxResidentSet{};
    unsigned int reserved2{};
    unsigned int reserved3{};
};

} // namespace Corvane
