#include <corvane/interfaces/ILifecycleManagement.h>

#include <utility>

namespace Corvane
{

const std::string ILifecycleManagement::STATE_UNINITIALIZED = "UNINITIALIZED";
const std::string ILifecycleManagement::STATE_LOADING = "LOADING";
const std::string ILifecycleManagement::STATE_RUNNING = "RUNNING";
const std::string ILifecycleManagement::STATE_SUSPENDING = "SUSPENDING";
const std::string ILifecycleManagement::STATE_SUSPENDED = "SUSPENDED";
const std::string ILifecycleManagement::STATE_RESUMING = "RESUMING";
const std::string ILifecycleManagement::STATE_TERMINATING = "TERMINATING";
const std::string ILifecycleManagement::STATE_TERMINATED = "TERMINATED";
const std::string ILifecycleManagement::STATE_ABORTED = "ABORTED";
const std::string ILifecycleManagement::STATE_RUNAWAY = "RUNAWAY";

bool ILifecycleManagement::isApplicationTerminated(const std::string& state)
{
    return state == STATE_TERMINATED || state == STATE_ABORTED || state == STATE_RUNAWAY;
}

using RuntimeStatistics = ILifecycleManagement::RuntimeStatistics;

RuntimeStatistics::RuntimeStatistics(std::string processName, std::string hostName, unsigned int reserved0,
                                     unsigned int reserved1, unsigned int cpuLoad, unsigned int maxResidentSet,
                                     unsigned int reserved2, unsigned int reserved3)
    : processName(std::move(processName)),
      hostName(std::move(hostName)),
      reserved0(reserved0),
      reserved1(reserved1),
      cpuLoad(cpuLoad),
      maxResidentSet(maxResidentSet),
      reserved2(reserved2),
      reserved3(reserved3)
{
}

RuntimeStatistics::RuntimeStatistics(Deserializer& deserializer)
    : processName(deserialize<std::string>("processName", deserializer)),
      hostName(deserialize<std::string>("hostName", deserializer)),
      reserved0(deserialize<unsigned int>("reserved0", deserializer)),
      reserved1(deserialize<unsigned int>("reserved1", deserializer)),
      cpuLoad(deserialize<unsigned int>("cpuLoad", deserializer)),
      maxResidentSet(deserialize<unsigned int>("maxResidentSet", deserializer)),
      reserved2(deserialize<unsigned int>("reserved2", deserializer)),
      reserved3(deserialize<unsigned int>("reserved3", deserializer))
{
}

std::string RuntimeStatistics::getObjectType() const
{
    return "RuntimeStatistics";
}

std::unique_ptr<SerialObject> RuntimeStatistics::clone() const
{
    return std::make_unique<RuntimeStatistics>(*this);
}

void RuntimeStatistics::serialize(Serializer& serializer) const
{
    serializer.writeString("processName", processName);
    serializer.writeString("hostName", hostName);
    serializer.writeUnsigned("reserved0", reserved0);
    serializer.writeUnsigned("reserved1", reserved1);
    serializer.writeUnsigned("cpuLoad", cpuLoad);
    serializer.writeUnsigned("maxResidentSet", maxResidentSet);
    serializer.writeUnsigned("reserved2", reserved2);
    serializer.writeUnsigned("reserved3", reserved3);
}

RuntimeStatistics::~RuntimeStatistics() = default;

} // namespace Corvane
