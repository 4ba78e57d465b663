#include "Commands.h"
#include "Manager.h"
#include "Names.h"
#include "Output.h"
#include "Values.h"

#include <corvane/foundation/Serializer.h>
#include <limits>
#include <memory>
#include <optional>

/// The commands that ask the process manager to do something: launch, stop, restart, focus.
namespace Corvanectl
{
namespace
{

/// How long the outcome of a request is waited for.
struct Patience {
    double seconds = 30;

    bool isWanted() const { return seconds > 0; }
    std::chrono::milliseconds get() const { return inMilliseconds(seconds); }
};

std::shared_ptr<Patience> addPatience(CLI::App& command)
{
    auto patience = std::make_shared<Patience>();
    command.add_option("--wait", patience->seconds, "How long to wait until it is done (default: 30; 0: not at all)")
        ->check(CLI::Range(0.0, 86400.0))
        ->option_text("SECONDS");
    return patience;
}

struct Launch {
    std::string program;
    std::optional<std::string> name;
    std::optional<std::string> uid;
    std::optional<std::string> user;
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    std::optional<std::string> workingDirectory;
    std::string type;
    std::string parameters;
    std::string restart = "never";
    std::optional<std::string> location;
    std::optional<std::string> zOrder;
    std::optional<std::string> opacity;
    std::optional<std::string> visibility;
    bool fresh = false;
};

std::string writeCompositing(const Launch& launch)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    if (launch.location)
        serializer.writeJson("location", readLocation(*launch.location));
    if (launch.zOrder)
        serializer.writeJson("zOrder", readNumber(*launch.zOrder, std::numeric_limits<unsigned int>::max()));
    if (launch.opacity)
        serializer.writeJson("opacity", readNumber(*launch.opacity, 255));
    if (launch.visibility)
        serializer.writeJson("visibility", readSwitch(*launch.visibility));
    serializer.endObject("");
    return serializer.generate();
}

std::string writeLaunch(const Launch& launch)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("program", launch.program);
    if (launch.name)
        serializer.writeString("name", *launch.name);
    if (launch.uid)
        serializer.writeString("uid", *launch.uid);
    if (launch.user)
        serializer.writeString("user", *launch.user);
    serializer.beginArray("arguments");
    for (const std::string& argument : launch.arguments)
        serializer.writeString("", argument);
    serializer.endArray("arguments");
    serializer.beginObject("environment");
    for (const std::string& variable : launch.environment) {
        const std::size_t end = variable.find('=');
        if (end == variable.npos || end == 0)
            throw UsageError("'" + variable + "' is no variable of the form NAME=VALUE");
        serializer.writeString(variable.substr(0, end), variable.substr(end + 1));
    }
    serializer.endObject("environment");
    if (launch.workingDirectory)
        serializer.writeString("workingDirectory", *launch.workingDirectory);
    serializer.writeString("applicationType", launch.type);
    serializer.writeString("applicationParameters", launch.parameters);
    serializer.writeString("restart", launch.restart);
    if (launch.fresh)
        serializer.writeBoolean("fresh", true);
    serializer.writeJson("compositingParameters", writeCompositing(launch));
    serializer.endObject("");
    return serializer.generate();
}

void runLaunch(const Launch& launch, const Patience& patience, const Options& options)
{
    const std::string parameters = writeLaunch(launch);
    Manager manager(options);
    if (patience.isWanted())
        manager.listen();
    const std::string uid = showPlain(manager.call("IApplicationManager::launch", parameters));
    std::string outcome = writeObject("uid", writeString(uid));
    if (patience.isWanted())
        outcome = manager.await("uid", uid, "onLaunch", "onLaunchFailure", patience.get());
    options.json ? printJson(outcome) : printLine(uid);
}

void addLaunchOptions(CLI::App& command, Launch& launch)
{
    addRequired(command, "PROGRAM", launch.program, "A path, or a name that is looked for in the manager's PATH");
    command.add_option("ARGUMENT", launch.arguments, "The program's arguments")->option_text("...");
    command
        .add_option("--name", launch.name,
                    "What to call it in place of its uid, 1 to 32 of a-z, 0-9 and -; no other that lives may have it")
        ->option_text("NAME");
    command
        .add_option("--uid", launch.uid,
                    "Its uid, which is its authorization token (default: one that nobody can guess)")
        ->option_text("UID");
    command.add_option("--user", launch.user, "The user that it runs as (default: the one who asks)")
        ->option_text("NAME");
    command.add_option("--type", launch.type, "Application type")->option_text("TEXT");
    command.add_option("--parameters", launch.parameters, "Application parameters")->option_text("TEXT");
    command.add_option("--restart", launch.restart, "never (default), on-failure or always")
        ->check(CLI::IsMember({"never", "on-failure", "always"}, CLI::ignore_case))
        ->option_text("WHEN");
    command.add_option("--env", launch.environment, "A variable of its environment; may be given again")
        ->take_all()
        ->allow_extra_args(false) // what follows is the program
        ->option_text("NAME=VALUE");
    command.add_option("--directory", launch.workingDirectory, "Working directory (default: /)")->option_text("FOLDER");
    command.add_option("--location", launch.location, "Place and size of its window")->option_text("X,Y,W,H");
    command.add_option("--z-order", launch.zOrder, "Place of its window in the stack")->option_text("NUMBER");
    command.add_option("--opacity", launch.opacity, "Opacity of its window")->option_text("0-255");
    command.add_option("--visibility", launch.visibility, "Whether its window is visible")->option_text("on|off");
    command.add_flag("--fresh", launch.fresh,
                     "Started again, it gets neither the place of its window nor the focus back");
}

/// A command that asks for something with one application.
struct BoxRequest {
    const char* name;
    const char* method;
    const char* success;
    const char* failure;
    const char* description;
};

const BoxRequest BOX_REQUESTS[] = {
    {"stop", "IApplicationManager::stop", "onStop", "onStopFailure",
     "Stops an application: asks it, then sends SIGTERM, then SIGKILL"},
    {"restart", "IApplicationManager::restart", "onLaunch", "onLaunchFailure",
     "Stops an application that was launched, and starts it again"},
};

void runRequest(const BoxRequest& request, const std::string& word, const Patience& patience, const Options& options)
{
    const std::string uid = findUid(word, options);
    Manager manager(options);
    if (patience.isWanted())
        manager.listen();
    const std::string result = manager.call(request.method, writeObject("uid", writeString(uid)));
    if (!patience.isWanted())
        return printResult(result, options.json);
    const std::string outcome = manager.await("uid", uid, request.success, request.failure, patience.get());
    if (options.json)
        printJson(outcome);
}

} // namespace

void moveFocus(const std::string& word, bool focus, const Options& options)
{
    const std::string uid = findUid(word, options);
    Manager manager(options);
    manager.listen();
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("uid", uid);
    serializer.writeBoolean("obtained", focus);
    serializer.endObject("");
    manager.call("IWindowCompositing::setFocus", serializer.generate());
    // Both windows may use up their time to answer.
    const auto patience = Patience().get();
    const std::string outcome = manager.await(focus ? "uid" : "oldUid", uid, "onFocusMove", "onFocusFailure", patience);
    if (options.json)
        printJson(outcome);
}

void addBoxCommands(CLI::App& app, Options& options)
{
    CLI::App& command = addCommand(app, options, "launch", "Starts an application through the process manager",
                                   "launch --name tv --type player --restart on-failure /usr/bin/player -- --fast");
    const auto launch = std::make_shared<Launch>();
    addLaunchOptions(command, *launch);
    const auto launchPatience = addPatience(command);
    command.callback([launch, launchPatience, &options] { runLaunch(*launch, *launchPatience, options); });

    for (const BoxRequest& request : BOX_REQUESTS) {
        CLI::App& other =
            addCommand(app, options, request.name, request.description, std::string(request.name) + " UID");
        const auto uid = addUid(other);
        const auto patience = addPatience(other);
        other.callback([&request, uid, patience, &options] { runRequest(request, *uid, *patience, options); });
    }
}

} // namespace Corvanectl
