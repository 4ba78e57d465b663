#include <corvane/APPServer.h>

#include <atomic>
#include <corvane/Window.h>
#include <corvane/common/Service.h>

namespace Corvane
{

APPServer::APPServer(Window* window) : window(window), service(nullptr) {}

APPServer::APPServer(Service* service) : window(nullptr), service(service) {}

void APPServer::init()
{
    if (window != nullptr)
        window->addListener(this);
    if (service != nullptr)
        service->addListener(this);
}

APPServer::~APPServer()
{
    if (Window* const served = getWindow())
        served->removeListener(this);
    if (Service* const served = getService())
        served->removeListener(this);
}

IApplication* APPServer::getSingleton()
{
    if (Window* const served = getWindow())
        return served;
    return getService();
}

void APPServer::onStateChange(const std::string& /*uid*/, const std::string& /*oldState*/, const std::string& newState)
{
    if (!ILifecycleManagement::isApplicationTerminated(newState))
        return;
    // Atomic, and no lock: this may be a signal handler, and a handler of a call may be reading the pointers.
    std::atomic_ref(window).store(nullptr);
    std::atomic_ref(service).store(nullptr);
}

Window* APPServer::getWindow()
{
    return std::atomic_ref(window).load();
}

Service* APPServer::getService()
{
    return std::atomic_ref(service).load();
}

} // namespace Corvane
