#include "Commands.h"
#include "Output.h"
#include "Server.h"
#include "Values.h"

#include <corvane/interfaces/ILifecycleManagement.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <limits>
#include <memory>

namespace Corvanectl
{
namespace
{

/// A command that asks for something without parameters.
struct Request {
    const char* name;
    const char* method;
    const char* description;
};

const Request REQUESTS[] = {
    {"activate", "IApplication::activate", "Asks a suspended application to resume (it may refuse silently)"},
    {"suspend", "IApplication::suspend", "Asks an application to suspend (it may refuse silently)"},
    {"terminate", "IApplication::terminate", "Asks an application to terminate"},
};

void addRequest(CLI::App& app, Options& options, const Request& request)
{
    CLI::App& command =
        addCommand(app, options, request.name, request.description, std::string(request.name) + " demo");
    const auto uid = addUid(command);
    command.callback(
        [uid, method = request.method, &options] { printResult(Server(*uid, options).call(method), options.json); });
}

void showStatistics(const std::string& uid, const Options& options)
{
    const std::string result = Server(uid, options).call("IApplication::getRuntimeStatistics");
    if (options.json)
        return printLine(result);
    Corvane::Deserializer deserializer(result);
    const Corvane::ILifecycleManagement::RuntimeStatistics statistics(deserializer);
    printTable({{"process", makePrintable(statistics.getProcessName())},
                {"host", makePrintable(statistics.getHostName())},
                {"processor", std::to_string(statistics.getCpuLoad()) + " % since it was asked last"},
                {"memory", std::to_string(statistics.getMaxResidentSet()) + " kB at most"}});
}

struct Key {
    std::string code;
    bool pressOnly = false;
    bool releaseOnly = false;
};

std::string sendKey(Server& server, const std::string& code, bool pressed)
{
    const Corvane::IWindowEvent::KeyEvent event(static_cast<unsigned int>(std::stoul(code)), pressed);
    return server.call("IWindow::handleEvent", writeObject("event", event.serialize()));
}

void pressKey(const std::string& uid, const Key& key, const Options& options)
{
    const std::string code = readNumber(key.code, std::numeric_limits<unsigned int>::max());
    Server server(uid, options);
    for (const bool pressed : {true, false}) {
        if (pressed ? key.releaseOnly : key.pressOnly)
            continue;
        const std::string word = pressed ? "pressed" : "released";
        const std::string used = sendKey(server, code, pressed);
        printLine(options.json ? writeObject(word, used)
                               : "key " + code + " " + word + ": " + (used == "true" ? "used" : "not used"));
    }
}

} // namespace

void addApplicationCommands(CLI::App& app, Options& options)
{
    CLI::App& stats = addCommand(app, options, "stats", "Shows what an application uses of the machine", "stats demo");
    const auto uid = addUid(stats);
    stats.callback([uid, &options] { showStatistics(*uid, options); });

    for (const Request& request : REQUESTS)
        addRequest(app, options, request);

    CLI::App& command = addCommand(app, options, "key", "Presses and releases a key in a window", "key demo 28");
    const auto key = std::make_shared<Key>();
    const auto receiver = addUid(command);
    addRequired(command, "CODE", key->code, "Linux key code, as a number (KEY_ENTER is 28)");
    CLI::Option* press = command.add_flag("--press", key->pressOnly, "Only press it");
    command.add_flag("--release", key->releaseOnly, "Only release it")->excludes(press);
    command.callback([receiver, key, &options] { pressKey(*receiver, *key, options); });
}

} // namespace Corvanectl
