#include "launch/LaunchRequest.h"

#include <corvane/foundation/SerialError.h>
#include <optional>
#include <simdjson.h>

namespace Procmand
{

namespace
{

using Corvane::deserialize;
using Corvane::Deserializer;
using Corvane::SerialError;
using Settings = Corvane::ISurfaceManagement::CreationSettings;

/// Names are typed by people, and uids are parts of file names.
constexpr std::size_t NAME_LENGTH = 32;
constexpr std::size_t UID_LENGTH = 64;
constexpr std::string_view NAME_LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789-";
constexpr std::string_view UID_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";

/// Replaces the value by the member `key`, where there is one.
template <class T>
void readOptional(const char* key, T& value, Deserializer& deserializer)
{
    if (deserializer.hasMember(key))
        value = deserialize<T>(key, deserializer);
}

/// Reads what an application is to be known by. The first letter is none that makes an option or a hidden file of it.
void readIdentity(const char* key, std::string& value, std::string_view letters, std::size_t length,
                  const char* expected, Deserializer& deserializer)
{
    if (!deserializer.hasMember(key))
        return;
    value = deserialize<std::string>(key, deserializer);
    if (value.empty() || value.size() > length || value.find_first_not_of(letters) != value.npos ||
        value.front() == '-' || value.front() == '.')
        deserializer.fail(key, expected);
}

/// @return the last member of that name, as the deserializer has it
std::optional<simdjson::dom::element> findMember(simdjson::dom::object object, std::string_view name)
{
    std::optional<simdjson::dom::element> found;
    for (const auto& [key, value] : object)
        if (key == name)
            found = value;
    return found;
}

/// The deserializer knows no arrays.
void readArguments(simdjson::dom::element list, std::vector<std::string>& arguments)
{
    simdjson::dom::array array;
    if (list.get(array) != simdjson::SUCCESS)
        throw SerialError("arguments: expected an array");
    for (const simdjson::dom::element element : array) {
        std::string_view argument;
        if (element.get(argument) != simdjson::SUCCESS)
            throw SerialError("arguments: expected strings");
        arguments.emplace_back(argument);
    }
}

/// The deserializer, which is there for the errors, looks for each member from the beginning: with tens of thousands of
/// them that takes long.
void readEnvironment(simdjson::dom::element members, LaunchRequest& request, Deserializer& deserializer)
{
    deserializer.enterMember("environment");
    std::map<std::string_view, simdjson::dom::element> variables;
    const simdjson::dom::object object = members;
    for (const auto& [name, value] : object)
        variables.insert_or_assign(name, value);
    for (const auto& [key, value] : variables) {
        const std::string name(key);
        if (name.empty() || name.find('=') != name.npos)
            deserializer.fail(name, "is no name of an environment variable");
        std::string_view text;
        request.environment[name] =
            value.get(text) == simdjson::SUCCESS ? std::string(text) : deserializer.readString(name);
    }
    deserializer.leaveMember("environment");
}

/// Reads what the deserializer has no operations for.
void readLists(const std::string& text, LaunchRequest& request, Deserializer& deserializer)
{
    simdjson::dom::parser parser;
    const simdjson::dom::object members = parser.parse(text);
    if (const auto list = findMember(members, "arguments"))
        readArguments(*list, request.arguments);
    if (const auto object = findMember(members, "environment"))
        readEnvironment(*object, request, deserializer);
}

/// The system's calls take texts that end with NUL.
void refuseNul(const LaunchRequest& request)
{
    const auto check = [](const std::string& text) {
        if (text.find('\0') != text.npos)
            throw SerialError("a NUL character cannot be passed to a program");
    };
    check(request.program);
    check(request.workingDirectory);
    check(request.user);
    for (const std::string& argument : request.arguments)
        check(argument);
    for (const auto& [name, value] : request.environment) {
        check(name);
        check(value);
    }
}

void writeLaunchParameters(const LaunchRequest& request, Corvane::Serializer& serializer)
{
    serializer.writeString("applicationType", request.applicationType);
    serializer.writeString("applicationParameters", request.applicationParameters);
    request.compositingParameters.serialize("compositingParameters", serializer);
}

} // namespace

LaunchRequest LaunchRequest::read(const std::string& text)
{
    Deserializer deserializer(text);
    LaunchRequest request;
    request.program = deserialize<std::string>("program", deserializer);
    if (request.program.empty())
        deserializer.fail("program", "is empty");
    readIdentity("name", request.name, NAME_LETTERS, NAME_LENGTH,
                 "expected 1 to 32 of a-z, 0-9 and -, the first one no -", deserializer);
    readIdentity("uid", request.uid, UID_LETTERS, UID_LENGTH,
                 "expected 1 to 64 of A-Z, a-z, 0-9, -, . and _, the first one neither - nor .", deserializer);
    readLists(text, request, deserializer);
    readOptional("workingDirectory", request.workingDirectory, deserializer);
    readOptional("applicationType", request.applicationType, deserializer);
    readOptional("applicationParameters", request.applicationParameters, deserializer);
    readOptional("compositingParameters", request.compositingParameters, deserializer);
    readOptional("user", request.user, deserializer);
    readOptional("fresh", request.fresh, deserializer);
    std::string mode = nameOf(request.restart);
    readOptional("restart", mode, deserializer);
    const auto known = findRestartMode(mode);
    if (!known)
        deserializer.fail("restart", "expected never, on-failure or always");
    request.restart = *known;
    refuseNul(request);
    return request;
}

std::string LaunchRequest::write() const
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    if (!name.empty())
        serializer.writeString("name", name);
    serializer.writeString("program", program);
    serializer.beginArray("arguments");
    for (const std::string& argument : arguments)
        serializer.writeString("", argument);
    serializer.endArray("arguments");
    serializer.beginObject("environment");
    for (const auto& [name, value] : environment)
        serializer.writeString(name, value);
    serializer.endObject("environment");
    serializer.writeString("workingDirectory", workingDirectory);
    writeLaunchParameters(*this, serializer);
    serializer.writeString("restart", nameOf(restart));
    if (!user.empty())
        serializer.writeString("user", user);
    serializer.writeBoolean("fresh", fresh);
    serializer.endObject("");
    return serializer.generate();
}

std::string LaunchRequest::writeParameters(const std::string& token) const
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    writeLaunchParameters(*this, serializer);
    serializer.writeString("authorizationToken", token);
    serializer.endObject("");
    return serializer.generate();
}

} // namespace Procmand
