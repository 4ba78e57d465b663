#include <corvane/common/RPCChannel.h>

#include "RPCAnswer.h"
#include "RPCInput.h"
#include "RPCLink.h"

#include <algorithm>
#include <charconv>
#include <corvane/foundation/ReturnCode.h>
#include <sys/socket.h>

namespace Corvane
{

namespace
{

/// @return the number in an answer's id; 0 for what was no call of this channel
unsigned int readNumber(const std::string& id)
{
    unsigned int number = 0;
    std::from_chars(id.data(), id.data() + id.size(), number);
    return number;
}

} // namespace

RPCChannel::RPCChannel(const std::string& serverName, std::size_t messageLimit)
    : socket(RPCLink::connectNow(serverName)), input(std::make_unique<RPCInput>(messageLimit))
{
}

RPCChannel::~RPCChannel() = default;

int RPCChannel::getDescriptor() const
{
    return socket.get();
}

unsigned int RPCChannel::call(const std::string& method, const std::string& parameters)
{
    const std::string id = std::to_string(lastCall + 1);
    std::string message = callMessage(id, method, parameters);
    // A message is a line; in JSON a line feed can only be white space.
    std::replace(message.begin(), message.end(), '\n', ' ');
    message += '\n';
    if (isBroken || ::send(socket.get(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) !=
                        static_cast<ssize_t>(message.size())) {
        isBroken = true; // the rest of this message would be missing before the next one
        throw RPCError(RPCError::Reason::DISCONNECTED, RETURN_REFUSED_BY_SYSTEM, "the server takes no more calls");
    }
    return ++lastCall;
}

unsigned int RPCChannel::subscribe(const std::vector<std::string>& patterns)
{
    return call("rpc.subscribe", subscriptionParameters(patterns));
}

bool RPCChannel::receive()
{
    return input->receive(socket.get()) != RPCInput::Outcome::CLOSED;
}

std::optional<RPCChannel::Message> RPCChannel::take()
{
    const auto text = input->takeMessage();
    if (!text)
        return std::nullopt;
    RPCAnswer answer(*text);
    if (answer.isNotification)
        return Message{
            .notification = std::move(answer.method), .payload = std::move(answer.parameters), .call = 0, .error = {}};
    Message message{
        .notification = {}, .payload = std::move(answer.result), .call = readNumber(answer.id), .error = {}};
    if (answer.errorCode)
        message.error.emplace(RPCError::Reason::CALL_FAILED, *answer.errorCode, answer.errorMessage);
    return message;
}

} // namespace Corvane
