#include "LaunchRequest.h"

#include <corvane/foundation/SerialError.h>
#include <simdjson.h>

namespace Procmand
{

namespace
{

using Corvane::deserialize;
using Corvane::Deserializer;
using Corvane::SerialError;
using Settings = Corvane::ISurfaceManagement::CreationSettings;

/// Replaces the value by the member `key`, where there is one.
template <class T>
void readOptional(const char* key, T& value, Deserializer& deserializer)
{
    if (deserializer.hasMember(key))
        value = deserialize<T>(key, deserializer);
}

/// The deserializer knows no arrays, so this one member is read with the parser itself.
std::vector<std::string> readArguments(const std::string& text)
{
    simdjson::dom::parser parser;
    std::vector<std::string> arguments;
    simdjson::dom::element list;
    if (parser.parse(text)["arguments"].get(list) != simdjson::SUCCESS)
        return arguments;
    simdjson::dom::array array;
    if (list.get(array) != simdjson::SUCCESS)
        throw SerialError("arguments: expected an array");
    for (const simdjson::dom::element element : array) {
        std::string_view argument;
        if (element.get(argument) != simdjson::SUCCESS)
            throw SerialError("arguments: expected strings");
        arguments.emplace_back(argument);
    }
    return arguments;
}

std::map<std::string, std::string> readEnvironment(Deserializer& deserializer)
{
    std::map<std::string, std::string> environment;
    if (!deserializer.hasMember("environment"))
        return environment;
    deserializer.enterMember("environment");
    for (const std::string& name : deserializer.getMemberNames()) {
        if (name.empty() || name.find('=') != name.npos)
            deserializer.fail(name, "is no name of an environment variable");
        environment[name] = deserializer.readString(name);
    }
    deserializer.leaveMember("environment");
    return environment;
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
    request.arguments = readArguments(text);
    request.environment = readEnvironment(deserializer);
    readOptional("workingDirectory", request.workingDirectory, deserializer);
    readOptional("applicationType", request.applicationType, deserializer);
    readOptional("applicationParameters", request.applicationParameters, deserializer);
    readOptional("compositingParameters", request.compositingParameters, deserializer);
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
