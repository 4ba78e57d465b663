#include "ServerFakes.h"

#include <set>

/// What a server tells about itself must be what it does.
namespace Corvane::Test
{

namespace
{

/// The entries of an array in a server's description, by name.
std::map<std::string, Json> describe(RPCServer& server, const char* list)
{
    const Json answer =
        Json::parse(server.handleRPCSynchronousMethodPayload(R"({"jsonrpc":"2.0","id":1,"method":"rpc.discover"})"));
    std::map<std::string, Json> entries;
    for (const Json& entry : answer["result"][list])
        entries[entry["name"]] = entry;
    return entries;
}

std::set<std::string> keysOf(const Json& object)
{
    std::set<std::string> keys;
    for (const auto& entry : object.items())
        keys.insert(entry.key());
    return keys;
}

std::set<std::string> parametersOf(const Json& description)
{
    std::set<std::string> names;
    for (const Json& parameter : description["params"])
        names.insert(parameter["name"]);
    return names;
}

/// Whether a value is of the schema's type; as far as the schemas of this library go.
bool fits(const Json& value, const Json& schema)
{
    if (schema.contains("const"))
        return value == schema["const"];
    if (schema.contains("oneOf"))
        return std::count_if(schema["oneOf"].begin(), schema["oneOf"].end(),
                             [&](const Json& choice) { return fits(value, choice); }) == 1;
    const std::string type = schema["type"];
    if (type == "integer")
        return value.is_number_integer();
    if (type != "object")
        return value.type_name() == type;
    if (!value.is_object())
        return false;
    for (const Json& required : schema.value("required", Json::array()))
        if (!value.contains(required))
            return false;
    for (const auto& [key, member] : value.items())
        if (!schema["properties"].contains(key) || !fits(member, schema["properties"][key]))
            return false;
    return true;
}

Json schemaOf(const Json& description, const std::string& parameter)
{
    for (const Json& entry : description["params"])
        if (entry["name"] == parameter)
            return entry["schema"];
    return {};
}

} // namespace

class Descriptions : public ServerTest
{
protected:
    template <std::size_t N>
    void expectTrue(OpenServer& server, const Method (&methods)[N])
    {
        const std::map<std::string, Json> described = describe(server, "methods");
        for (const Method& method : methods) {
            const std::string name = std::string(method.interface) + "::" + method.name;
            ASSERT_TRUE(described.contains(name)) << name;
            const Json& description = described.at(name);
            const Json parameters = Json::parse(method.parameters);
            EXPECT_EQ(parametersOf(description), keysOf(parameters)) << name;
            EXPECT_GT(description["summary"].get<std::string>().size(), 10U) << name;
            for (const auto& [key, value] : parameters.items())
                EXPECT_TRUE(fits(value, schemaOf(description, key))) << name << " " << key;
            const Json result = call(server, method)["result"];
            EXPECT_TRUE(fits(result, description["result"]["schema"])) << name << " " << result;
        }
    }
};

TEST_F(Descriptions, TellTheParametersAndResultsOfAWindowsMethods)
{
    expectTrue(windowServer, APPLICATION_METHODS);
    expectTrue(windowServer, WINDOW_METHODS);
    expectTrue(windowServer, STACKING_METHODS);
    EXPECT_EQ(describe(windowServer, "methods").size(), 21U);
    EXPECT_EQ(windowServer.description.methods.size(), 21U);
}

TEST_F(Descriptions, TellTheParametersAndResultsOfAServicesMethods)
{
    expectTrue(serviceServer, APPLICATION_METHODS);
    expectTrue(serviceServer, SERVICE_METHODS);
    EXPECT_EQ(describe(serviceServer, "methods").size(), 8U);
    EXPECT_EQ(serviceServer.description.methods.size(), 8U);
}

TEST_F(Descriptions, TellTheFormOfEveryEvent)
{
    using Mouse = IWindowEvent::MouseEvent;
    const Json schema = schemaOf(describe(windowServer, "methods").at("IWindow::handleEvent"), "event");

    const IWindowEvent::KeyEvent key(28, true);
    const IWindowEvent::AsciiEvent character('a', false);
    const Mouse buttons{Mouse::Buttons(true, false, false, true, false, false)};
    const Mouse everything(Mouse::Buttons(), Mouse::Position(1, 2), Mouse::Movement(3, 4, 5));
    for (const Event* event : std::initializer_list<const Event*>{&key, &character, &buttons, &everything})
        EXPECT_TRUE(fits(Json::parse(event->serialize()), schema)) << event->serialize();
    EXPECT_FALSE(fits(Json::parse(R"({"type":"TouchEvent"})"), schema));
}

TEST_F(Descriptions, TellTheFieldsOfEveryNotification)
{
    RecordingSubscriber subscriber;
    windowServer.addListener(&subscriber);
    window.onKeepAlive("w", "RUNNING");
    window.setState(ILifecycleManagement::STATE_RUNNING);
    priority.value = 0;
    windowServer.onFocusChange("w", false, true);
    window.setVisibility(false);
    window.setOpacity(1);
    window.setZOrder(1);
    window.setLocation(Rect(0, 0, 1, 1));
    const std::map<std::string, Json> described = describe(windowServer, "x-notifications");

    for (const std::string& entry : journal.read()) {
        const std::string name = entry.substr(0, entry.find(' '));
        const Json payload = Json::parse(entry.substr(entry.find(' ')));
        ASSERT_TRUE(described.contains(name)) << name;
        EXPECT_EQ(parametersOf(described.at(name)), keysOf(payload)) << name;
        for (const auto& [key, value] : payload.items())
            EXPECT_TRUE(fits(value, schemaOf(described.at(name), key))) << name << " " << key;
    }
    EXPECT_EQ(journal.read().size(), described.size());
    EXPECT_EQ(described.size(), 7U);
}

TEST_F(Descriptions, TellTheNotificationsOfAnApplicationForAService)
{
    const std::map<std::string, Json> described = describe(serviceServer, "x-notifications");

    EXPECT_EQ(described.size(), 2U);
    EXPECT_TRUE(described.contains("IApplication::onKeepAlive"));
    EXPECT_TRUE(described.contains("IApplication::onStateChange"));
}

} // namespace Corvane::Test
