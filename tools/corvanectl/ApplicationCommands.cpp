#include "Commands.h"
#include "Output.h"
#include "Server.h"

#include <corvane/interfaces/ILifecycleManagement.h>

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
        return printJson(result);
    Corvane::Deserializer deserializer(result);
    const Corvane::ILifecycleManagement::RuntimeStatistics statistics(deserializer);
    printTable({{"process", makePrintable(statistics.getProcessName())},
                {"host", makePrintable(statistics.getHostName())},
                {"processor", std::to_string(statistics.getCpuLoad()) + " % since it was asked last"},
                {"memory", std::to_string(statistics.getMaxResidentSet()) + " kB at most"}});
}

} // namespace

void addApplicationCommands(CLI::App& app, Options& options)
{
    CLI::App& stats = addCommand(app, options, "stats", "Shows what an application uses of the machine", "stats demo");
    const auto uid = addUid(stats);
    stats.callback([uid, &options] { showStatistics(*uid, options); });

    for (const Request& request : REQUESTS)
        addRequest(app, options, request);
}

} // namespace Corvanectl
