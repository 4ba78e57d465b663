#include <corvane/TekloWindow.h>

#include <atomic>
#include <corvane/Foundation.h>
#include <corvane/common/RPCError.h>
#include <corvane/procman/ORUClient.h>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

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

/// A property of the surface that the window keeps a copy of.
enum class Property { VISIBILITY, OPACITY, Z_ORDER, LOCATION };

/// The properties whose last setter got no answer: the manager may carry the change out all the same, later, and then
/// the window's copy is not what its surface has. Kept beside the windows, since a member would change what
/// applications were compiled against. Thread-safe.
class Doubts
{
public:
    void add(const TekloWindow& window, Property property)
    {
        const std::lock_guard<Mutex> guard(mutex);
        entries.emplace(&window, property);
    }
    void remove(const TekloWindow& window, Property property)
    {
        const std::lock_guard<Mutex> guard(mutex);
        entries.erase({&window, property});
    }
    bool has(const TekloWindow& window, Property property) const
    {
        const std::lock_guard<Mutex> guard(mutex);
        return entries.contains({&window, property});
    }
    void forget(const TekloWindow& window)
    {
        const std::lock_guard<Mutex> guard(mutex);
        std::erase_if(entries, [&](const auto& entry) { return entry.first == &window; });
    }

private:
    mutable Mutex mutex{"TekloWindow::doubts", 0};
    std::set<std::pair<const TekloWindow*, Property>> entries;
};

/// Never destroyed: the control server's handlers may still run while the process exits.
Doubts& doubts = *new Doubts;

/// Runs what asks the manager for a change, and notes whether the window knows afterwards what its surface has.
template <class Change>
void changeSurface(const TekloWindow& window, Property property, Change change)
{
    try {
        change();
    } catch (const RPCError& error) {
        // A refusal is an answer and changes nothing; without one, the call may still be waiting with the manager.
        if (error.getReason() != RPCError::Reason::CALL_FAILED)
            doubts.add(window, property);
        throw;
    }
    doubts.remove(window, property);
}

bool isSame(const ISurfaceCompositing::Rect& one, const ISurfaceCompositing::Rect& other)
{
    return one.getX() == other.getX() && one.getY() == other.getY() && one.getWidth() == other.getWidth() &&
           one.getHeight() == other.getHeight();
}

} // namespace

TekloWindow::TekloWindow(int argc, char** argv) : Window(argc, argv), client(nullptr) {}

TekloWindow::~TekloWindow()
{
    if (client != nullptr && resourceToken.getState() == IResourceAcquisition::ResourceToken::STATE_GRANTED)
        release(*client, resourceToken);
    delete client;
    client = nullptr;
    doubts.forget(*this);
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
    ORUClient& acquired = requireClient(__func__);
    changeSurface(*this, Property::VISIBILITY, [&] { acquired.setVisibility(getClientId(), visibility); });
    Window::setVisibility(visibility);
}

bool TekloWindow::getVisibility()
{
    const bool visibility = requireClient(__func__).getVisibility(getClientId());
    if (doubts.has(*this, Property::VISIBILITY) && visibility != Window::getVisibility())
        Window::setVisibility(visibility);
    return visibility;
}

void TekloWindow::setOpacity(unsigned int opacity)
{
    ORUClient& acquired = requireClient(__func__);
    changeSurface(*this, Property::OPACITY, [&] { acquired.setOpacity(getClientId(), opacity); });
    Window::setOpacity(opacity);
}

unsigned int TekloWindow::getOpacity()
{
    const unsigned int opacity = requireClient(__func__).getOpacity(getClientId());
    // The copy has the low 8 bits.
    if (doubts.has(*this, Property::OPACITY) && static_cast<std::uint8_t>(opacity) != Window::getOpacity())
        Window::setOpacity(opacity);
    return opacity;
}

void TekloWindow::setZOrder(unsigned int zOrder)
{
    ORUClient& acquired = requireClient(__func__);
    changeSurface(*this, Property::Z_ORDER, [&] { acquired.setZOrder(getClientId(), zOrder); });
    Window::setZOrder(zOrder);
}

unsigned int TekloWindow::getZOrder()
{
    const unsigned int zOrder = requireClient(__func__).getZOrder(getClientId());
    if (doubts.has(*this, Property::Z_ORDER) && zOrder != Window::getZOrder())
        Window::setZOrder(zOrder);
    return zOrder;
}

void TekloWindow::setLocation(const ISurfaceCompositing::Rect& location)
{
    ORUClient& acquired = requireClient(__func__);
    changeSurface(*this, Property::LOCATION, [&] { acquired.setLocation(getClientId(), location); });
    Window::setLocation(location);
}

ISurfaceCompositing::Rect TekloWindow::getLocation()
{
    const ISurfaceCompositing::Rect location = requireClient(__func__).getLocation(getClientId());
    if (doubts.has(*this, Property::LOCATION) && !isSame(location, Window::getLocation()))
        Window::setLocation(location);
    return location;
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
