#include "Commands.h"
#include "Output.h"

#include <corvane/Version.h>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <cstdlib>
#include <iostream>

namespace Corvanectl
{
namespace
{

enum ExitCode { DONE = 0, CALL_FAILED = 1, WRONG_USAGE = 2, NO_SERVER = 3 };

const char* const FOOTER = "UID is the uid of an application (its control server is named APPUID), or the name that it "
                           "was launched with, or the beginning of one application's uid or name, or the whole name of "
                           "a server.\n\n"
                           "Servers are looked for in $CORVANE_RUNTIME_DIR, else $XDG_RUNTIME_DIR/corvane, else "
                           "/run/corvane.\n\n"
                           "Exit codes: 0 done, 1 the call failed, 2 wrong usage, 3 no such server.\n\n"
                           "`corvanectl COMMAND --help` shows an example of each command.";

/// What went wrong may be in the words of a server.
int report(int exitCode, const std::string& problem)
{
    std::cerr << "corvanectl: " << makePrintable(problem) << std::endl;
    return exitCode;
}

int reportFailure(const Corvane::RPCError& error)
{
    if (error.getReason() != Corvane::RPCError::Reason::NO_SERVER)
        return report(CALL_FAILED, error.what());
    const char* folder = std::getenv("CORVANE_RUNTIME_DIR");
    return report(NO_SERVER, std::string(error.what()) + " (is the application running? CORVANE_RUNTIME_DIR" +
                                 (folder ? "=" + std::string(folder) : " is not set") + ")");
}

int runCommand(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
        // A full disk or a closed pipe must not pass for success.
        if (std::cout.flush())
            return DONE;
        return report(CALL_FAILED, "cannot write the output");
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? DONE : WRONG_USAGE;
    } catch (const UsageError& error) {
        return report(WRONG_USAGE, error.what());
    } catch (const Corvane::RPCError& error) {
        return reportFailure(error);
    } catch (const Corvane::Exception& exception) {
        return report(CALL_FAILED, exception.what());
    } catch (const std::exception& exception) {
        return report(CALL_FAILED, exception.what());
    }
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
    addRequired(command, "UID", *uid, "Uid or name of the application, or how one of them begins");
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
    addInputCommands(app, options);
    addTokenCommands(app, options);
    return runCommand(app, argc, argv);
}
