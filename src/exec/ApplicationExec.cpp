#include <corvane/ApplicationExec.h>

#include <corvane/APPRPCServer.h>
#include <corvane/Application.h>
#include <corvane/Foundation.h>
#include <corvane/common/Service.h>
#include <exception>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "ApplicationExec";

} // namespace

ApplicationExec::ApplicationExec() : server(nullptr) {}

ApplicationExec::~ApplicationExec()
{
    delete server;
    server = nullptr;
}

void ApplicationExec::runtimeInit(const char* name)
{
    debugInitialize(name);
}

void ApplicationExec::run(Application* application)
{
    try {
        bringUpServer(dynamic_cast<Service*>(application));
        application->init();
        application->run();
        // The caller may destroy its service as soon as this returns; a handler may still be at work on it, the one
        // that ended the main loop above all.
        if (server != nullptr)
            server->waitForHandler();
    } catch (const std::exception& e) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "caught exception: %s", e.what());
        endCalls();
        throw;
    } catch (...) {
        endCalls();
        throw;
    }
}

void ApplicationExec::bringUpServer(Service* service)
{
    if (service == nullptr)
        return;
    server = new APPRPCServer(service);
    server->init();
}

void ApplicationExec::endCalls()
{
    // The exception destroys the service on its way out, and what failed has reached no terminated state that would
    // keep a call away from it. The managers still hear how it ends.
    if (server != nullptr)
        server->endCalls();
}

} // namespace Corvane
