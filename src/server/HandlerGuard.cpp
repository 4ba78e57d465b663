#include "HandlerGuard.h"

#include <corvane/Foundation.h>
#include <exception>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "APPRPCServer";

std::string answerFailure(const char* method, const IRPC::RPCSynchronousMethodObject& request, const char* message)
{
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): caught exception: %s\n", method, message);
    return IRPC::RPCErrorObject(request, message).serialize();
}

} // namespace

std::string answerException(const char* method, const IRPC::RPCSynchronousMethodObject& request)
{
    try {
        throw;
    } catch (const Exception& e) {
        return answerFailure(method, request, e.what());
    } catch (const std::exception& e) {
        return answerFailure(method, request, e.what());
    } catch (...) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): caught unknown exception\n", method);
        return IRPC::RPCErrorObject(request, "unknown").serialize();
    }
}

} // namespace Corvane
