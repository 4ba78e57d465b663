#include <corvane/common/RPCServer.h>
#include <corvane/foundation/Serializer.h>

namespace Corvane
{

namespace
{

/// The form of the document: OpenRPC 1.2.6.
constexpr std::string_view OPENRPC_VERSION = "1.2.6";
constexpr std::string_view ANY_VALUE = "{}";

void writeParameters(std::span<const RPCParameterDescription> parameters, Serializer& serializer)
{
    serializer.beginArray("params");
    for (const RPCParameterDescription& parameter : parameters) {
        serializer.beginObject("");
        serializer.writeString("name", parameter.name);
        serializer.writeBoolean("required", true);
        serializer.writeJson("schema", parameter.schema);
        serializer.endObject("");
    }
    serializer.endArray("params");
}

/// A method without a description is still told, by its name alone.
void writeMethod(const std::string& name, const RPCMethodDescription* description, Serializer& serializer)
{
    serializer.beginObject("");
    serializer.writeString("name", name);
    if (description != nullptr)
        serializer.writeString("summary", description->summary);
    serializer.writeString("paramStructure", "by-name");
    writeParameters(description != nullptr ? description->parameters : std::span<const RPCParameterDescription>(),
                    serializer);
    serializer.beginObject("result");
    serializer.writeString("name", "result");
    serializer.writeJson("schema", description != nullptr ? description->resultSchema : ANY_VALUE);
    serializer.endObject("result");
    serializer.endObject("");
}

} // namespace

std::string RPCServer::discover() const
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("openrpc", OPENRPC_VERSION);
    serializer.beginObject("info");
    serializer.writeString("title", name);
    serializer.writeString("version", "1");
    serializer.endObject("info");
    serializer.beginArray("methods");
    for (const auto& [interface, methods] : interfaces) {
        for (const auto& entry : methods)
            writeMethod(interface + "::" + entry.first, description.find(interface, entry.first), serializer);
    }
    serializer.endArray("methods");
    serializer.beginArray("x-notifications");
    for (const RPCNotificationDescription& notification : description.notifications) {
        serializer.beginObject("");
        serializer.writeString("name", notification.name);
        serializer.writeString("summary", notification.summary);
        writeParameters(notification.parameters, serializer);
        serializer.endObject("");
    }
    serializer.endArray("x-notifications");
    serializer.endObject("");
    return serializer.generate();
}

} // namespace Corvane
