#include <corvane/APPRPCServer.h>

#include <corvane/foundation/Serializer.h>

/// What a control server announces. A process announces its end from the handler of a fatal signal, possibly with a
/// damaged heap, so nothing here allocates memory: the names are static, the keys are short enough for a std::string to
/// hold them in itself (15 characters), and the Serializer and RPCServer keep buffers ready.
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

template <class Value>
void writeField(const char* key, const Value& value, Serializer& serializer)
{
    serialize(key, value, serializer);
}

void writeField(const char* key, const ISurfaceCompositing::Rect& value, Serializer& serializer)
{
    value.serialize(key, serializer);
}

template <class Value>
void announceChange(RPCServer& server, const std::string& name, const std::string& uid, const char* oldKey,
                    const Value& oldValue, const char* newKey, const Value& newValue)
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
