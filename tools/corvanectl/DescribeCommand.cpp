#include "Commands.h"
#include "Output.h"
#include "Server.h"

#include <algorithm>

namespace Corvanectl
{
namespace
{

using simdjson::dom::element;

/// @return the member as text, empty when there is none
std::string findText(const element& object, const char* key)
{
    element member;
    return object[key].get(member) == simdjson::SUCCESS ? inWords(member) : "";
}

std::string describeType(const element& schema, bool withMembers);

bool isRequired(const element& schema, std::string_view name)
{
    element names;
    if (schema["required"].get(names) != simdjson::SUCCESS)
        return false;
    const auto list = names.get_array().value();
    return std::any_of(list.begin(), list.end(),
                       [name](const element& required) { return required.get_string().value() == name; });
}

/// @return "{x: integer, y: integer}", what may be left out marked with "?"
std::string describeMembers(const element& schema)
{
    std::string text;
    for (const auto& [name, member] : schema["properties"].get_object())
        text += (text.empty() ? "" : ", ") + makePrintable(name) + (isRequired(schema, name) ? ": " : "?: ") +
                describeType(member, false);
    return "{" + text + "}";
}

/// A JSON Schema in a few words: "boolean", "integer 0..255", "{x: integer, y: integer}".
/// @param withMembers  whether to tell of what objects consist
std::string describeType(const element& schema, bool withMembers)
{
    element part;
    if (schema["oneOf"].get(part) == simdjson::SUCCESS) {
        std::string text;
        for (const element choice : part.get_array())
            text += (text.empty() ? "" : " | ") + describeType(choice, withMembers);
        return text;
    }
    if (withMembers && schema["properties"].get(part) == simdjson::SUCCESS)
        return describeMembers(schema);
    if (schema["const"].get(part) == simdjson::SUCCESS)
        return "\"" + inWords(part) + "\"";
    const std::string type = findText(schema, "type");
    const std::string lowest = findText(schema, "minimum");
    const std::string highest = findText(schema, "maximum");
    const std::string range = withMembers && !highest.empty() ? " " + lowest + ".." + highest : "";
    return (type.empty() ? "any" : type) + range;
}

std::string describeParameters(const element& described)
{
    std::string text;
    for (const element parameter : described["params"].get_array())
        text +=
            (text.empty() ? "" : ", ") + findText(parameter, "name") + ": " + describeType(parameter["schema"], true);
    return "(" + text + ")";
}

void printEntry(const element& described, const std::string& result)
{
    printLine("  " + findText(described, "name") + describeParameters(described) + result);
    const std::string summary = findText(described, "summary");
    if (!summary.empty())
        printLine("      " + summary);
}

void printMethods(const element& document)
{
    printLine("Methods:");
    for (const element method : document["methods"].get_array()) {
        element schema;
        const bool hasSchema = method["result"]["schema"].get(schema) == simdjson::SUCCESS;
        const std::string type = hasSchema ? describeType(schema, true) : "null";
        printEntry(method, type == "null" ? "" : " -> " + type);
    }
}

void printNotifications(const element& document)
{
    element notifications;
    if (document["x-notifications"].get(notifications) != simdjson::SUCCESS)
        return;
    printLine("Notifications:");
    for (const element notification : notifications.get_array())
        printEntry(notification, "");
}

void describe(const std::string& uid, const Options& options)
{
    Server server(uid, options);
    const std::string answer = server.call("rpc.discover");
    if (options.json)
        return printJson(answer);
    const JsonText document(answer);
    printLine("Server " + makePrintable(server.getName()));
    printMethods(document.root);
    printNotifications(document.root);
}

} // namespace

void addDescribeCommand(CLI::App& app, Options& options)
{
    CLI::App& command =
        addCommand(app, options, "describe",
                   "Shows the methods and notifications of a server (--json: its OpenRPC document)", "describe demo");
    const auto uid = addUid(command);
    command.callback([uid, &options] { describe(*uid, options); });
}

} // namespace Corvanectl
