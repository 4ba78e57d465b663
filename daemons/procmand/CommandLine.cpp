#include "CommandLine.h"

#ifdef CORVANE_WITH_DIRECTFB
#include "screen/Compositor.h"
#include "screen/CompositorCheck.h"
#endif

#include <CLI/CLI.hpp>
#include <chrono>
#include <corvane/Version.h>
#include <cstdlib>

namespace Procmand
{

namespace
{

constexpr int WRONG_USAGE = 2;

void addSeconds(CLI::App& app, const std::string& name, Settings::Duration& value, const std::string& description)
{
    const double seconds = std::chrono::duration<double>(value).count();
    std::ostringstream text;
    text << description << " (default: " << seconds << ")";
    app.add_option_function<double>(
           name,
           [&value](double given) {
               // Not cut off: the product is a little too small here on one processor, there on another.
               value = std::chrono::round<Settings::Duration>(std::chrono::duration<double>(given));
           },
           text.str())
        ->check(CLI::Range(0.001, 86400.0))
        ->take_last()
        ->option_text("SECONDS");
}

template <class T>
void addNumber(CLI::App& app, const std::string& name, T& value, const std::string& description)
{
    app.add_option(name, value, description + " (default: " + std::to_string(value) + ")")
        ->check(CLI::Range(T{0}, T{100000}))
        ->take_last()
        ->option_text("NUMBER");
}

void addOptions(CLI::App& app, Settings& settings)
{
    app.add_option("--state-folder", settings.stateFolder,
                   "Where the history and what applications print are kept (default: $STATE_DIRECTORY, else " +
                       settings.stateFolder + ")")
        ->option_text("FOLDER");
    addSeconds(app, "--keep-alive-deadline", settings.keepAliveDeadline, "Silence that makes an application a runaway");
    addSeconds(app, "--call-deadline", settings.callDeadline, "How long an application may take to answer a call");
    addSeconds(app, "--terminate-deadline", settings.terminateDeadline, "How long it may take to terminate when asked");
    addSeconds(app, "--term-deadline", settings.termDeadline, "How long it may take to end after SIGTERM");
    addSeconds(app, "--kill-deadline", settings.killDeadline, "How long it may take to end after SIGKILL");
    addSeconds(app, "--abort-deadline", settings.abortDeadline, "How long it may live on once it has said it aborts");
    addSeconds(app, "--restart-delay", settings.restartDelay,
               "Delay of the first restart; each further one doubles it");
    addSeconds(app, "--restart-delay-limit", settings.restartDelayLimit, "The longest delay of a restart");
    addNumber(app, "--restart-limit", settings.restartLimit, "Restarts in a row before an application is given up");
    addSeconds(app, "--stable-time", settings.stableTime, "A run of this length begins a new row of restarts");
    addNumber(app, "--windows", settings.windowLimit, "How many windows there are");
    addNumber(app, "--windows-per-application", settings.clientWindowLimit,
              "How many of them one application may have");
    app.add_option("--policy", settings.policyFile, "Says who may do what (default: " + settings.policyFile + ")")
        ->take_last()
        ->option_text("FILE");
    app.add_option("--compositor", settings.compositor,
                   "Where the windows are shown (default: " + settings.compositor + ")")
        ->check(CLI::IsMember(listCompositors()))
        ->take_last()
        ->option_text("NAME");
    app.add_flag("--stop-applications", settings.stopsApplications,
                 "On SIGTERM, stop what was launched (default: leave it running)");
}

/// Options that do something else instead of serving.
void addActions(CLI::App& app)
{
    app.set_version_flag("--version", "corvane-procmand " CORVANE_VERSION);
#ifdef CORVANE_WITH_DIRECTFB
    app.add_flag_callback(
        CHECK_OPTION, [] { checkDirectFB(); }, "Only find out whether DirectFB starts here");
#endif
}

} // namespace

std::optional<Settings> readCommandLine(int argc, char** argv, int& exitCode)
{
    Settings settings;
    settings.compositor = listCompositors().front();
    CLI::App app("The process manager of a box: launches applications, watches them, and stacks their windows.",
                 "corvane-procmand");
    addActions(app);
    addOptions(app, settings);
    if (const char* const folder = std::getenv("STATE_DIRECTORY"); folder != nullptr && *folder != '\0')
        settings.stateFolder = folder;
    try {
        app.parse(argc, argv);
        return settings;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? 0 : WRONG_USAGE;
        return std::nullopt;
    }
}

} // namespace Procmand
