#include "Commands.h"
#include "Output.h"

#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <cstdlib>
#include <iostream>

namespace Corvanectl
{
namespace
{

enum ExitCode { DONE = 0, CALL_FAILED = 1, WRONG_USAGE = 2, NO_SERVER = 3 };

const char* const FOOTER = "UID is the uid of an application (its control server is named APPUID), or the whole name "
                           "of a server.\n\n"
                           "Servers are looked for in $CORVANE_RUNTIME_DIR, else $XDG_RUNTIME_DIR/corvane, else "
                           "/run/corvane.\n\n"
                           "Exit codes: 0 done, 1 the call failed, 2 wrong usage, 3 no such server.\n\n"
                           "`corvanectl COMMAND --help` shows an example of each command.";

int reportFailure(const Corvane::RPCError& error)
{
    std::cerr << "corvanectl: " << makePrintable(error.what());
    if (error.getReason() != Corvane::RPCError::Reason::NO_SERVER) {
        std::cerr << std::endl;
        return CALL_FAILED;
    }
    const char* folder = std::getenv("CORVANE_RUNTIME_DIR");
    std::cerr << " (is the application running? CORVANE_RUNTIME_DIR"
              << (folder ? "=" + std::string(folder) : " is not set") << ")" << std::endl;
    return NO_SERVER;
}

int runCommand(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
        // A full disk or a closed pipe must not pass for success.
        if (std::cout.flush())
            return DONE;
        std::cerr << "corvanectl: cannot write the output" << std::endl;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? DONE : WRONG_USAGE;
    } catch (const UsageError& error) {
        std::cerr << "corvanectl: " << error.what() << std::endl;
        return WRONG_USAGE;
    } catch (const Corvane::RPCError& error) {
        return reportFailure(error);
    } catch (const Corvane::Exception& exception) {
        std::cerr << "corvanectl: " << exception.what() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << "corvanectl: " << exception.what() << std::endl;
    }
    return CALL_FAILED;
}

} // namespace

void addOptions(CLI::App& app, Options& options)
{
    app.add_flag("--json", options.json, "Print one JSON text a line, for scripts");
    app.add_option("--timeout", options.timeoutSeconds, "How long to wait for an answer (default: 5)")
        ->check(CLI::Range(0.001, 86400.0))
        ->option_text("SECONDS");
}

CLI::App& addCommand(CLI::App& app, Options& options, const std::string& name, const std::string& description,
                     const std::string& example)
{
    CLI::App& command = *app.add_subcommand(name, description);
    command.group("Commands");
    command.footer("Example:\n  corvanectl " + example);
    addOptions(command, options);
    return command;
}

void addRequired(CLI::App& command, const std::string& name, std::string& value, const std::string& description)
{
    command.add_option(name, value, description)->required()->option_text(" ");
}

std::shared_ptr<std::string> addUid(CLI::App& command)
{
    auto uid = std::make_shared<std::string>();
    addRequired(command, "UID", *uid, "Uid of the application");
    return uid;
}

} // namespace Corvanectl

int main(int argc, char** argv)
{
    using namespace Corvanectl;
    Options options;
    CLI::App app("Looks at Corvane applications and drives them over their control servers.", "corvanectl");
    app.set_version_flag("--version", "corvanectl " CORVANE_VERSION);
    app.require_subcommand(0, 1);
    app.final_callback([&app] {
        if (app.get_subcommands().empty())
            throw UsageError("no command is given (corvanectl --help tells more)");
    });
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "corvanectl: " + std::string(error.what()) + " (corvanectl --help tells more)\n";
    });
    app.footer(FOOTER);
    addOptions(app, options);
    addServerCommands(app, options);
    addDescribeCommand(app, options);
    addMonitorCommand(app, options);
    addPropertyCommands(app, options);
    addApplicationCommands(app, options);
    addBoxCommands(app, options);
    addBoxViews(app, options);
    addKeyCommand(app, options);
    addTokenCommands(app, options);
    return runCommand(app, argc, argv);
}
