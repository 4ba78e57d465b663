#include <corvane/TekloWindow.h>

#include <atomic>
#include <corvane/Foundation.h>
#include <corvane/procman/ORUClient.h>
#include <cstdlib>
#include <exception>
#include <memory>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "TekloWindow";

[[noreturn]] void fail(const char* function, ReturnCode code, int line = __builtin_LINE())
{
    const Exception exception(code);
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, "%s(): throwing exception: %s\n", function, exception.what());
    throw exception;
}

void reportRelease(const char* problem)
{
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "releaseResource failed: %s\n", problem);
}

/// Gives the surface back; a failure is one line, for the window goes on being destroyed.
void release(ORUClient& client, const IResourceAcquisition::ResourceToken& token) noexcept
{
    try {
        client.releaseResource(token);
    } catch (const Exception& exception) {
        reportRelease(exception.what());
    } catch (const std::exception& exception) {
        reportRelease(exception.what());
    } catch (...) {
        reportRelease("unknown");
    }
}

} // namespace

TekloWindow::TekloWindow(int argc, char** argv) : Window(argc, argv), client(nullptr) {}

TekloWindow::~TekloWindow()
{
    if (client != nullptr && resourceToken.getState() == IResourceAcquisition::ResourceToken::STATE_GRANTED)
        release(*client, resourceToken);
    delete client;
    client = nullptr;
}

void TekloWindow::init()
{
    Window::init();
    acquireSurface();
    if (resourceToken.getState() == IResourceAcquisition::ResourceToken::STATE_GRANTED)
        return setClientId(resourceToken.getResourceIndex());
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__,
                      "getResource IResourceAcquisition::RESOURCE_TYPE_GRAPHICS_WINDOW failed\n");
    fail(__func__, RETURN_REFUSED_BY_SYSTEM);
}

void TekloWindow::acquireSurface()
{
    std::unique_ptr<ORUClient> created(ORUClient::create(Client::TYPE_WINDOW));
    // The window's control server is up already: its handlers find the client when the token is there, not earlier.
    // Whatever comes of the request, the client is the window's to delete.
    const auto publish = [&] { std::atomic_ref(client).store(created.release()); };
    try {
        created->init();
        resourceToken = created->getResource(getUid(), getLaunchParameters().getCompositingParameters());
    } catch (...) {
        publish();
        throw;
    }
    publish();
}

ORUClient& TekloWindow::requireClient(const char* function, int line)
{
    ORUClient* const acquired = std::atomic_ref(client).load();
    if (acquired == nullptr)
        fail(function, RETURN_INVALID_STATE, line);
    return *acquired;
}

void TekloWindow::setVisibility(bool visibility)
{
    requireClient(__func__).setVisibility(getClientId(), visibility);
    Window::setVisibility(visibility);
}

bool TekloWindow::getVisibility()
{
    return requireClient(__func__).getVisibility(getClientId());
}

void TekloWindow::setOpacity(unsigned int opacity)
{
    requireClient(__func__).setOpacity(getClientId(), opacity);
    Window::setOpacity(opacity);
}

unsigned int TekloWindow::getOpacity()
{
    return requireClient(__func__).getOpacity(getClientId());
}

void TekloWindow::setZOrder(unsigned int zOrder)
{
    requireClient(__func__).setZOrder(getClientId(), zOrder);
    Window::setZOrder(zOrder);
}

unsigned int TekloWindow::getZOrder()
{
    return requireClient(__func__).getZOrder(getClientId());
}

void TekloWindow::setLocation(const ISurfaceCompositing::Rect& location)
{
    requireClient(__func__).setLocation(getClientId(), location);
    Window::setLocation(location);
}

ISurfaceCompositing::Rect TekloWindow::getLocation()
{
    return requireClient(__func__).getLocation(getClientId());
}

void TekloWindow::bringToFront()
{
    requireClient(__func__).bringToFront(getClientId());
}

void TekloWindow::sendToBack()
{
    requireClient(__func__).sendToBack(getClientId());
}

void TekloWindow::bringForward()
{
    requireClient(__func__).bringForward(getClientId());
}

void TekloWindow::sendBackward()
{
    requireClient(__func__).sendBackward(getClientId());
}

void TekloWindow::setInputWebSocketID(std::string& /*id*/, Window& /*window*/) {}

unsigned int TekloWindow::getClientId() const
{
    return resourceToken.getResourceIndex();
}

void TekloWindow::setCursorState(const IWindowEvent::MouseEvent& /*event*/) const {}

void TekloWindow::setClientId(unsigned int /*id*/)
{
    // Deliberate: the surface's own index, whatever the argument says; the two agree when `init()` calls.
    const std::string text = std::to_string(resourceToken.getResourceIndex());
    setenv("clientid", text.c_str(), 1);
    setenv("dfb_clientid", text.c_str(), 1);
}

} // namespace Corvane
