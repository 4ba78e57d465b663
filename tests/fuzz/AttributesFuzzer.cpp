#include "Require.h"

#include <corvane/APPRPCServer.h>
#include <corvane/Application.h>
#include <corvane/common/Service.h>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/foundation/Serializer.h>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Any text may come as the attributes of a token. It is read as a map of maps of integers or refused; what was read
/// and written again reads the same; and a service gets what was read, or no call at all.
namespace
{

using namespace Corvane;
using Attributes = MapObject<MapObject<int>>;

/// @return the attributes as they are written, nothing when the text is refused
std::optional<std::string> readAndWrite(const std::string& text)
{
    try {
        Deserializer deserializer(text);
        return Attributes(deserializer).MapBase::serialize();
    } catch (const SerialError& error) {
        require(error.what()[0] != '\0', "an error says what was wrong");
        return {};
    }
}

class FuzzedService : public Application, public Service
{
public:
    using Application::Application;
    std::string getUid() override { return Application::getUid(); }
    void createAuthorizationToken(unsigned int, Attributes attributes) override
    {
        received = attributes.MapBase::serialize();
    }
    void deleteAuthorizationToken(unsigned int) override {}

    std::optional<std::string> received;
};

/// A service and its server that nobody else reaches: messages go in as texts.
struct Target {
    std::string program = "fuzz";
    std::vector<char*> arguments{program.data(), nullptr};
    FuzzedService service{1, arguments.data()};
    APPRPCServer server{static_cast<Service*>(&service)};
};

std::string writeCall(const std::string& text)
{
    Serializer call;
    call.beginObject("");
    call.writeString("jsonrpc", "2.0");
    call.writeString("id", "a");
    call.writeString("method", "IService::authorizationTokenCreation");
    call.beginObject("params");
    call.writeString("authAttrInternal", text);
    serialize("token", 1U, call);
    call.endObject("params");
    call.endObject("");
    return call.generate();
}

/// @param expected  what the service is to get, nothing when it is not to be called
void checkCall(Target& target, const std::string& text, const std::optional<std::string>& expected)
{
    target.service.received.reset();
    Deserializer reply(target.server.handleRPCSynchronousMethodPayload(writeCall(text)));
    require(reply.hasMember(expected ? "result" : "error"), "a text that can be read is accepted, another is not");
    require(target.service.received == expected, "the service gets the attributes as they are read here");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Target target;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string> written = readAndWrite(text);
    if (written) {
        require(readAndWrite(*written) == written, "attributes that were written read the same");
        checkCall(target, *written, written);
    }
    // Bytes that are no UTF-8 do not travel as they are; nothing but such bytes is changed on the way.
    Deserializer carried(writeCall(text));
    carried.enterMember("params");
    const std::string arrived = carried.readString("authAttrInternal");
    checkCall(target, text, arrived == text ? written : readAndWrite(arrived));
    return 0;
}
