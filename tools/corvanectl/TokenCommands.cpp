#include "Commands.h"
#include "Output.h"
#include "Server.h"
#include "Values.h"

#include <cerrno>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/foundation/Serializer.h>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>

/// The commands that tell a service which callers may do what.
namespace Corvanectl
{
namespace
{

/// What a control server takes in one message: a longer file cannot be sent, and may have no end.
constexpr std::size_t LENGTH_LIMIT = 1024 * 1024;

struct Token {
    std::string uid;
    std::string token;
    std::string file;
};

std::string readWhole(std::istream& stream, const std::string& name)
{
    std::string text(LENGTH_LIMIT + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad())
        throw UsageError(name + " cannot be read: " + std::strerror(errno));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > LENGTH_LIMIT)
        throw UsageError(name + " is longer than the 1 MiB that a message may have");
    return text;
}

std::string readFile(const std::string& path)
{
    if (path == "-")
        return readWhole(std::cin, "the standard input");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw UsageError(path + " cannot be read: " + std::strerror(errno));
    return readWhole(file, path);
}

/// @return the attributes as a service reads them, without blanks
std::string readAttributes(const std::string& path)
{
    const std::string text = readFile(path);
    try {
        Corvane::Deserializer deserializer(text);
        const Corvane::MapObject<Corvane::MapObject<int>> attributes(deserializer);
        return attributes.MapBase::serialize();
    } catch (const Corvane::SerialError& error) {
        throw UsageError((path == "-" ? "the standard input" : path) + " holds no attributes: " + error.what());
    }
}

std::string readToken(const std::string& text)
{
    return readNumber(text, std::numeric_limits<unsigned int>::max());
}

void createToken(const Token& token, const Options& options)
{
    Corvane::Serializer parameters;
    parameters.beginObject("");
    parameters.writeJson("token", readToken(token.token));
    parameters.writeString("authAttrInternal", readAttributes(token.file));
    parameters.endObject("");
    printResult(Server(token.uid, options).call("IService::authorizationTokenCreation", parameters.generate()),
                options.json);
}

void deleteToken(const Token& token, const Options& options)
{
    const std::string parameters = writeObject("token", readToken(token.token));
    printResult(Server(token.uid, options).call("IService::authorizationTokenDeletion", parameters), options.json);
}

/// Adds the words that both commands have.
std::shared_ptr<Token> addToken(CLI::App& command)
{
    auto token = std::make_shared<Token>();
    addRequired(command, "UID", token->uid, "Uid or name of the service, or how one of them begins");
    addRequired(command, "TOKEN", token->token, "The token, 0-4294967295");
    return token;
}

} // namespace

void addTokenCommands(CLI::App& app, Options& options)
{
    CLI::App& group = addCommand(app, options, "token", "Announces a token to a service, or withdraws it",
                                 "token create volume 42 attributes.json\n  corvanectl token delete volume 42");
    group.require_subcommand(0, 1);
    group.callback([&group] {
        if (group.get_subcommands().empty())
            throw UsageError("token: create or delete is missing (corvanectl token --help tells more)");
    });

    CLI::App& creation = addCommand(group, options, "create", "Announces a token with its attributes",
                                    "token create volume 42 attributes.json, the file being\n"
                                    "  {\"volume\":{\"change\":1}}");
    const auto created = addToken(creation);
    addRequired(creation, "FILE", created->file,
                "The attributes: a JSON object of objects of numbers; - for the standard input");
    creation.callback([created, &options] { createToken(*created, options); });

    CLI::App& deletion = addCommand(group, options, "delete",
                                    "Withdraws a token; one that was never announced is for the service to "
                                    "judge",
                                    "token delete volume 42");
    const auto deleted = addToken(deletion);
    deletion.callback([deleted, &options] { deleteToken(*deleted, options); });
}

} // namespace Corvanectl
