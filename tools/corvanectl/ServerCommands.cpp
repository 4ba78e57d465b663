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

/// A server that lives and the state of its application; a server that does not tell it says why.
struct ServerState {
    std::string name;
    std::string state;
    std::string problem;
};

ServerState findState(const std::string& serverName, const Options& options)
{
    try {
        Corvane::RPCClient client(serverName);
        const std::string state = client.call("IApplication::getState", "{}", options.getTimeout());
        return {serverName, showPlain(state), ""};
    } catch (const Corvane::RPCError& error) {
        return {serverName, "", error.what()};
    }
}

std::string writeServer(const ServerState& server)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("uid", uidOf(server.name));
    serializer.writeString("server", server.name);
    if (server.problem.empty()) {
        serializer.writeString("state", server.state);
    } else {
        serializer.writeNull("state");
        serializer.writeString("problem", server.problem);
    }
    serializer.endObject("");
    return serializer.generate();
}

void listServers(const Options& options)
{
    std::vector<std::vector<std::string>> rows{{"UID", "SERVER", "STATE"}};
    for (const std::string& name : Corvane::RPCClient::listServers()) {
        const ServerState server = findState(name, options);
        if (options.json)
            printLine(writeServer(server));
        else
            rows.push_back({makePrintable(uidOf(name)), makePrintable(name),
                            server.problem.empty() ? server.state : "- (" + makePrintable(server.problem) + ")"});
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
        addCommand(app, options, "list", "Lists the control servers that live, and their applications' states", "list");
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
