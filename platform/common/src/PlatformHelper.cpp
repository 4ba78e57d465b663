#include <corvane/common/PlatformHelper.h>

#include "RPCAddress.h"

#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/Serializer.h>
#include <exception>
#include <sys/socket.h>
#include <unistd.h>

namespace Corvane
{

template class Singleton<PlatformHelper>;

namespace
{

constexpr const char* TAG = "PlatformHelper";
constexpr const char* MANAGER = "ORU";

/// The helpers that were made while there was an instance. Nobody frees them: the Singleton's rule leaves them alone.
PlatformHelper* firstFurther = nullptr;

/// The call that announces this process, as one line. It has no id, so the manager sends no answer to it.
std::string writeRegistration(const std::string& token)
{
    Serializer parameters;
    parameters.beginObject("");
    parameters.writeString("uid", token.empty() ? std::to_string(getpid()) : token);
    parameters.writeUnsigned("pid", static_cast<unsigned int>(getpid()));
    parameters.endObject("");
    return IRPC::RPCAsynchronousMethodObject("IApplicationManager", "registerApplication", parameters.generate())
               .serialize() +
           "\n";
}

/// Leaves a message with a server that may be busy: the system keeps it until the server reads it.
/// @throws RPCError  nobody listens, or takes anything now
void leaveMessage(const char* serverName, const std::string& message)
{
    const FileDescriptor socket =
        RPCAddress::connectTo(RPCAddress::socketAddress(RPCAddress::socketPath(serverName)), {});
    if (!socket.isOpen())
        throw RPCAddress::systemError(RPCError::Reason::NO_SERVER, "cannot connect");
    const ssize_t sent = send(socket.get(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(message.size()))
        throw RPCAddress::systemError(RPCError::Reason::DISCONNECTED, "cannot send");
}

} // namespace

PlatformHelper::PlatformHelper(const std::string& token) : token(token)
{
    const std::lock_guard<Mutex> guard(singletonMutex);
    if (instance != nullptr) {
        nextFurther = firstFurther;
        firstFurther = this;
        return;
    }
    references = 1;
    instance = this;
}

PlatformHelper::~PlatformHelper() = default;

void PlatformHelper::startHelper() noexcept
{
    try {
        leaveMessage(MANAGER, writeRegistration(token));
    } catch (const std::exception& exception) {
        corvaneDebugPrint(DEBUG_INFO, TAG, TAG, __LINE__, "not registered with a process manager: %s\n",
                          exception.what());
    }
}

} // namespace Corvane
