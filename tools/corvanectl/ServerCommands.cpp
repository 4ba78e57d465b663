#include "Commands.h"
#include "Names.h"
#include "Output.h"
#include "Server.h"
#include "Values.h"

#include <corvane/foundation/Serializer.h>
#include <memory>
#include <optional>

namespace Corvanectl
{
namespace
{

/// What is known of a server.
struct ServerState {
    std::string name;
    std::optional<std::string> state{}; ///< of its application; none where there is no application, too
    std::string problem{};              ///< why the server does not tell
    bool isDead = false;                ///< only its socket is left
};

/// What JSON-RPC answers where there is no such interface or method.
constexpr int UNKNOWN_METHOD = -32601;

ServerState findState(const std::string& serverName, const Options& options)
{
    try {
        Corvane::RPCClient client(serverName);
        return {.name = serverName,
                .state = showPlain(client.call("IApplication::getState", "{}", options.getTimeout()))};
    } catch (const Corvane::RPCError& error) {
        const bool isNoApplication =
            error.getReason() == Corvane::RPCError::Reason::CALL_FAILED && error.getCode() == UNKNOWN_METHOD;
        return {.name = serverName, .problem = isNoApplication ? "" : error.what()};
    }
}

std::string writeServer(const ServerState& server)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("uid", uidOf(server.name));
    serializer.writeString("server", server.name);
    if (server.state)
        serializer.writeString("state", *server.state);
    else
        serializer.writeNull("state");
    if (!server.problem.empty())
        serializer.writeString("problem", server.problem);
    if (server.isDead)
        serializer.writeBoolean("dead", true);
    serializer.endObject("");
    return serializer.generate();
}

std::string describeState(const ServerState& server)
{
    if (server.isDead)
        return "- (dead)";
    if (!server.problem.empty())
        return "- (" + makePrintable(server.problem) + ")";
    return server.state.value_or("-");
}

void listServers(const Options& options)
{
    std::vector<ServerState> servers;
    for (const std::string& name : Corvane::RPCClient::listServers())
        servers.push_back(findState(name, options));
    for (const std::string& name : Corvane::RPCClient::listDeadServers())
        servers.push_back({.name = name, .isDead = true});
    std::vector<std::vector<std::string>> rows{{"UID", "SERVER", "STATE"}};
    for (const ServerState& server : servers) {
        if (options.json)
            printJson(writeServer(server));
        else
            rows.push_back({makePrintable(uidOf(server.name)), makePrintable(server.name), describeState(server)});
    }
    if (!options.json)
        printTable(rows);
}

struct Call {
    std::string method;
    std::vector<std::string> words;
    std::optional<std::string> parameters;
};

void callMethod(const std::string& uid, const Call& call, const Options& options)
{
    const std::string parameters = call.parameters ? readParameterObject(*call.parameters) : readParameters(call.words);
    printResult(Server(uid, options).call(call.method, parameters), options.json);
}

} // namespace

void addServerCommands(CLI::App& app, Options& options)
{
    CLI::App& list =
        addCommand(app, options, "list",
                   "Lists the control servers with their applications' states, and the sockets of dead ones", "list");
    list.callback([&options] { listServers(options); });

    CLI::App& command = addCommand(app, options, "call", "Calls any method and prints its result",
                                   "call demo IWindow::handleEvent "
                                   "'event={\"type\":\"KeyEvent\",\"keyCode\":28,\"pressed\":true}'");
    const auto call = std::make_shared<Call>();
    const auto uid = addUid(command);
    addRequired(command, "METHOD", call->method, "Interface and method: IWindow::setOpacity");
    CLI::Option* words = command.add_option("PARAMETER", call->words,
                                            "KEY=VALUE, a value being JSON; what is no JSON is taken for a string");
    words->option_text("...");
    command.add_option("--params", call->parameters, "All parameters as one JSON object")
        ->excludes(words)
        ->option_text("JSON");
    command.callback([uid, call, &options] { callMethod(*uid, *call, options); });
}

} // namespace Corvanectl
