#include "server/JsonValue.h"
#include "server/ManagerServer.h"

#include <corvane/foundation/ValueObjects.h>

/// The handlers of IWindowCompositing.
namespace Procmand
{

namespace
{

using Corvane::deserialize;
using Corvane::Deserializer;
using Corvane::IRPC::RPCResultObject;
using Corvane::IRPC::RPCReturnObject;
using Rect = Corvane::ISurfaceCompositing::Rect;

constexpr char VISIBILITY_KEY[] = "visibility";
constexpr char OPACITY_KEY[] = "opacity";
constexpr char Z_ORDER_KEY[] = "zorder";
constexpr char LOCATION_KEY[] = "location";

Corvane::BooleanObject asSerialObject(bool value)
{
    return Corvane::BooleanObject(value);
}

Corvane::UInt32Object asSerialObject(unsigned int value)
{
    return Corvane::UInt32Object(value);
}

const Rect& asSerialObject(const Rect& value)
{
    return value;
}

} // namespace

/// `OPERATION` is the operation of the stack, `KEY` the name of its parameter.
template <class T, auto OPERATION, const char* KEY>
std::string ManagerServer::setProperty(const Request& request)
{
    Deserializer parameters(request.getParameters());
    const unsigned int index = requireWindow(request).index;
    const T value = deserialize<T>(KEY, parameters);
    windows.change([&](WindowStack& stack) { (stack.*OPERATION)(index, value); });
    return RPCReturnObject(request).serialize();
}

template <auto MEMBER>
std::string ManagerServer::getProperty(const Request& request)
{
    return RPCResultObject(request, asSerialObject(requireWindow(request).*MEMBER)).serialize();
}

template <auto OPERATION>
std::string ManagerServer::stack(const Request& request)
{
    const unsigned int index = requireWindow(request).index;
    windows.change([index](WindowStack& windows) { (windows.*OPERATION)(index); });
    return RPCReturnObject(request).serialize();
}

void ManagerServer::fillCompositingMethods()
{
    using Server = ManagerServer;
    MethodTable& methods = interfaces["IWindowCompositing"];
    methods["setVisibility"] =
        static_cast<Handler>(&Server::setProperty<bool, &WindowStack::setVisibility, VISIBILITY_KEY>);
    methods["getVisibility"] = static_cast<Handler>(&Server::getProperty<&WindowState::visibility>);
    methods["setOpacity"] =
        static_cast<Handler>(&Server::setProperty<unsigned int, &WindowStack::setOpacity, OPACITY_KEY>);
    methods["getOpacity"] = static_cast<Handler>(&Server::getProperty<&WindowState::opacity>);
    methods["setZOrder"] =
        static_cast<Handler>(&Server::setProperty<unsigned int, &WindowStack::setZOrder, Z_ORDER_KEY>);
    methods["getZOrder"] = static_cast<Handler>(&Server::getProperty<&WindowState::zOrder>);
    methods["setLocation"] = static_cast<Handler>(&Server::setProperty<Rect, &WindowStack::setLocation, LOCATION_KEY>);
    methods["getLocation"] = static_cast<Handler>(&Server::getProperty<&WindowState::location>);
    methods["bringToFront"] = static_cast<Handler>(&Server::stack<&WindowStack::bringToFront>);
    methods["sendToBack"] = static_cast<Handler>(&Server::stack<&WindowStack::sendToBack>);
    methods["bringForward"] = static_cast<Handler>(&Server::stack<&WindowStack::bringForward>);
    methods["sendBackward"] = static_cast<Handler>(&Server::stack<&WindowStack::sendBackward>);
    methods["getWindows"] = static_cast<Handler>(&Server::getWindows);
    methods["setFocus"] = static_cast<Handler>(&Server::setFocus);
    methods["screenshot"] = static_cast<Handler>(&Server::screenshot);
}

std::string ManagerServer::getWindows(const Request& request)
{
    Corvane::Serializer serializer;
    serializer.beginArray("");
    for (const WindowState& window : box.windows.getWindows()) {
        serializer.beginObject("");
        window.serialize(serializer);
        if (const ManagedApplication* const application = box.registry.find(window.uid))
            application->writeIdentity(serializer);
        serializer.writeBoolean("focus", window.uid == focus.getFocused());
        serializer.endObject("");
    }
    serializer.endArray("");
    return RPCResultObject(request, JsonValue(serializer.generate())).serialize();
}

std::string ManagerServer::setFocus(const Request& request)
{
    Deserializer parameters(request.getParameters());
    const auto uid = deserialize<std::string>("uid", parameters);
    const bool obtained = deserialize<bool>("obtained", parameters);
    if (!box.registry.require(uid).isConnected)
        throw std::runtime_error("the application " + uid + " has no control server");
    if (focus.countMoves() >= Quotas::FOCUS_MOVES)
        throw std::runtime_error("too many moves of the focus wait already");
    focus.request(uid, obtained);
    return RPCReturnObject(request).serialize();
}

std::string ManagerServer::screenshot(const Request& request)
{
    if (!pictures) {
        // Beside the sockets: whoever may call may read there.
        const std::string socket = getFixedRPCAddress();
        pictures.emplace(socket.substr(0, socket.rfind('/')));
    }
    const std::string file = pictures->begin();
    const auto onAnswer = [this, file](const std::string& problem) {
        box.loop.post([this, file, problem] { onPicture(file, problem); });
    };
    try {
        box.compositor->screenshot(file, onAnswer);
    } catch (...) {
        pictures->onFailure(file);
        throw;
    }
    return RPCResultObject(request, Corvane::StringObject(file)).serialize();
}

void ManagerServer::onPicture(const std::string& file, const std::string& problem)
{
    if (problem.empty()) {
        pictures->onTaken(file);
        box.notices.onScreenshot(file);
    } else {
        pictures->onFailure(file);
        box.notices.onScreenshotFailure(file, problem);
    }
}

} // namespace Procmand
