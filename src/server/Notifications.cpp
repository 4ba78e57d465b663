#include <corvane/APPRPCServer.h>

#include <corvane/foundation/Serializer.h>
#include <string_view>

/// What a control server announces. A process announces its end from the handler of a fatal signal, possibly with a
/// damaged heap, so nothing here allocates memory: the names and the keys are static, and the Serializer and RPCServer
/// keep buffers ready.
namespace Corvane
{

namespace
{

struct Names {
    const std::string keepAlive = "IApplication::onKeepAlive";
    const std::string stateChange = "IApplication::onStateChange";
    const std::string focusChange = "IWindow::onFocusChange";
    const std::string visibilityChange = "IWindow::onVisibilityChange";
    const std::string opacityChange = "IWindow::onOpacityChange";
    const std::string zOrderChange = "IWindow::onZOrderChange";
    const std::string locationChange = "IWindow::onLocationChange";
};

/// Never destroyed: a thread may still announce something while the process runs its exit handlers.
const Names& NAMES = *new Names;

void writeField(std::string_view key, const std::string& value, Serializer& serializer)
{
    serializer.writeString(key, value);
}

void writeField(std::string_view key, unsigned int value, Serializer& serializer)
{
    serializer.writeUnsigned(key, value);
}

void writeField(std::string_view key, bool value, Serializer& serializer)
{
    serializer.writeBoolean(key, value);
}

void writeField(std::string_view key, const ISurfaceCompositing::Rect& value, Serializer& serializer)
{
    value.serialize(std::string(key), serializer);
}

template <class Value>
void announceChange(RPCServer& server, const std::string& name, const std::string& uid, std::string_view oldKey,
                    const Value& oldValue, std::string_view newKey, const Value& newValue)
{
    Serializer payload;
    payload.beginObject("");
    writeField("uid", uid, payload);
    writeField(oldKey, oldValue, payload);
    writeField(newKey, newValue, payload);
    payload.endObject("");
    server.handleRPCNotification(name, payload.generate());
}

} // namespace

void APPRPCServer::onKeepAlive(const std::string& uid, const std::string& state)
{
    Serializer payload;
    payload.beginObject("");
    writeField("uid", uid, payload);
    writeField("state", state, payload);
    payload.endObject("");
    handleRPCNotification(NAMES.keepAlive, payload.generate());
}

void APPRPCServer::onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState)
{
    APPServer::onStateChange(uid, oldState, newState);
    announceChange(*this, NAMES.stateChange, uid, "oldState", oldState, "newState", newState);
}

void APPRPCServer::onFocusChange(const std::string& uid, const bool& oldIsFocused, const bool& newIsFocused)
{
    announceChange(*this, NAMES.focusChange, uid, "oldIsFocused", oldIsFocused, "newIsFocused", newIsFocused);
}

void APPRPCServer::onVisibilityChange(const std::string& uid, const bool& oldVisibility, const bool& newVisibility)
{
    announceChange(*this, NAMES.visibilityChange, uid, "oldVisibility", oldVisibility, "newVisibility", newVisibility);
}

void APPRPCServer::onOpacityChange(const std::string& uid, const unsigned int& oldOpacity,
                                   const unsigned int& newOpacity)
{
    announceChange(*this, NAMES.opacityChange, uid, "oldOpacity", oldOpacity, "newOpacity", newOpacity);
}

void APPRPCServer::onZOrderChange(const std::string& uid, const unsigned int& oldZOrder, const unsigned int& newZOrder)
{
    announceChange(*this, NAMES.zOrderChange, uid, "oldZOrder", oldZOrder, "newZOrder", newZOrder);
}

void APPRPCServer::onLocationChange(const std::string& uid, const ISurfaceCompositing::Rect& oldLocation,
                                    const ISurfaceCompositing::Rect& newLocation)
{
    announceChange(*this, NAMES.locationChange, uid, "oldLocation", oldLocation, "newLocation", newLocation);
}

} // namespace Corvane
