#include "RemoteClient.h"

#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "ORUClient";

using Rect = ISurfaceCompositing::Rect;

/// Writes a member of a type that a property has.
template <class T>
void write(const char* key, const T& value, Serializer& serializer)
{
    serialize(key, value, serializer);
}

void write(const char* key, const Rect& value, Serializer& serializer)
{
    value.serialize(key, serializer);
}

std::string writeIndex(unsigned int index)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeUnsigned("index", index);
    serializer.endObject("");
    return serializer.generate();
}

/// Reads the result of a call.
template <class T>
T read(const std::string& result)
{
    // A value is read by its key, so it gets one.
    Deserializer deserializer("{\"result\":" + result + "}");
    return deserialize<T>("result", deserializer);
}

/// @return the failure in words that name the manager
RPCError describe(const RPCError& error)
{
    switch (error.getReason()) {
    case RPCError::Reason::NO_SERVER:
        return {error.getReason(), error.getCode(), std::string("no process manager is running: ") + error.what()};
    case RPCError::Reason::DISCONNECTED:
        return {error.getReason(), error.getCode(), std::string("the process manager has gone: ") + error.what()};
    case RPCError::Reason::TIMED_OUT:
        return {error.getReason(), error.getCode(),
                std::string("the process manager does not answer: ") + error.what()};
    default:
        return error;
    }
}

} // namespace

RemoteClient::RemoteClient(Client::Type type) : type(type) {}

void RemoteClient::init()
{
    ORUClient::init();
    connection = std::make_unique<RPCClient>("ORU");
}

std::string RemoteClient::call(const char* method, const std::string& parameters, int line)
{
    if (!connection) {
        const Exception exception(RETURN_INVALID_STATE);
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, "%s(): throwing exception: %s\n", method, exception.what());
        throw exception;
    }
    try {
        return connection->call(method, parameters);
    } catch (const RPCError& error) {
        throw describe(error);
    }
}

IResourceAcquisition::ResourceToken RemoteClient::getResource(const std::string& uid,
                                                              const ISurfaceManagement::CreationSettings& settings)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("uid", uid);
    // The manager takes the window back when this process ends.
    serializer.writeUnsigned("pid", static_cast<unsigned int>(getpid()));
    serializer.writeUnsigned("clientType", type);
    serializer.writeUnsigned("resourceType", RESOURCE_TYPE_GRAPHICS_WINDOW);
    settings.serialize("settings", serializer);
    serializer.endObject("");
    return read<ResourceToken>(call("IResourceAcquisition::getResource", serializer.generate()));
}

void RemoteClient::releaseResource(const ResourceToken& token)
{
    call("IResourceAcquisition::releaseResource", writeIndex(token.getResourceIndex()));
}

template <class T>
void RemoteClient::setProperty(const char* method, unsigned int index, const char* key, const T& value, int line)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeUnsigned("index", index);
    write(key, value, serializer);
    serializer.endObject("");
    call(method, serializer.generate(), line);
}

template <class T>
T RemoteClient::getProperty(const char* method, unsigned int index, int line)
{
    return read<T>(call(method, writeIndex(index), line));
}

void RemoteClient::setVisibility(const unsigned int& index, bool visibility)
{
    setProperty("IWindowCompositing::setVisibility", index, "visibility", visibility);
}

bool RemoteClient::getVisibility(const unsigned int& index)
{
    return getProperty<bool>("IWindowCompositing::getVisibility", index);
}

void RemoteClient::setOpacity(const unsigned int& index, unsigned int opacity)
{
    setProperty("IWindowCompositing::setOpacity", index, "opacity", opacity);
}

unsigned int RemoteClient::getOpacity(const unsigned int& index)
{
    return getProperty<unsigned int>("IWindowCompositing::getOpacity", index);
}

void RemoteClient::setZOrder(const unsigned int& index, unsigned int zOrder)
{
    setProperty("IWindowCompositing::setZOrder", index, "zorder", zOrder);
}

unsigned int RemoteClient::getZOrder(const unsigned int& index)
{
    return getProperty<unsigned int>("IWindowCompositing::getZOrder", index);
}

void RemoteClient::setLocation(const unsigned int& index, const Rect& location)
{
    setProperty("IWindowCompositing::setLocation", index, "location", location);
}

Rect RemoteClient::getLocation(const unsigned int& index)
{
    return getProperty<Rect>("IWindowCompositing::getLocation", index);
}

void RemoteClient::bringToFront(const unsigned int& index)
{
    call("IWindowCompositing::bringToFront", writeIndex(index));
}

void RemoteClient::sendToBack(const unsigned int& index)
{
    call("IWindowCompositing::sendToBack", writeIndex(index));
}

void RemoteClient::bringForward(const unsigned int& index)
{
    call("IWindowCompositing::bringForward", writeIndex(index));
}

void RemoteClient::sendBackward(const unsigned int& index)
{
    call("IWindowCompositing::sendBackward", writeIndex(index));
}

ORUClient* ORUClient::create(Client::Type type)
{
    if (type <= Client::TYPE_WINDOW)
        return new RemoteClient(type);
    const Exception exception(RETURN_INVALID_PARAMETER);
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, __LINE__, "%s(): throwing exception: %s\n", __func__, exception.what());
    throw exception;
}

} // namespace Corvane
