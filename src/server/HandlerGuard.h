#pragma once

#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/ValueObjects.h>
#include <string>
#include <type_traits>

/// What all handlers of a control server have in common: the guard, the look-up of the target, and the reply.
namespace Corvane
{

/// Tells of the exception that is being handled, in one debug line.
/// @param method  name of the handler that let it out
/// @return the text of the error reply
std::string answerException(const char* method, const IRPC::RPCSynchronousMethodObject& request);

/// Runs a handler's body, so that no exception leaves the handler.
template <class Body>
std::string guardHandler(const char* method, const IRPC::RPCSynchronousMethodObject& request, Body body)
{
    try {
        return body();
    } catch (...) {
        return answerException(method, request);
    }
}

inline StringObject asSerialObject(const std::string& value)
{
    return StringObject(value);
}

inline UInt32Object asSerialObject(unsigned int value)
{
    return UInt32Object(value);
}

inline BooleanObject asSerialObject(bool value)
{
    return BooleanObject(value);
}

inline const SerialObject& asSerialObject(const SerialObject& value)
{
    return value;
}

/// Calls an operation of the served object and answers with its result.
/// @param target  looked up after the parameters were read, so that a bad parameter is reported first; null when the
///                served object has terminated
template <class Target, class Operation>
std::string callTarget(const IRPC::RPCSynchronousMethodObject& request, Target* target, Operation operation)
{
    if (target == nullptr)
        return IRPC::RPCErrorObject(request, "invalid proxy").serialize();
    if constexpr (std::is_void_v<std::invoke_result_t<Operation, Target&>>) {
        operation(*target);
        return IRPC::RPCReturnObject(request).serialize();
    } else {
        const auto result = operation(*target);
        return IRPC::RPCResultObject(request, asSerialObject(result)).serialize();
    }
}

} // namespace Corvane
