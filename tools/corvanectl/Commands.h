#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

/// The commands of corvanectl. Each function adds some to the command line; a command that was named runs while the
/// command line is parsed, and what fails in it is thrown.
namespace Corvanectl
{

/// @return the nearest whole number, not the next lower one: 0.29 s are 290 ms on every processor
inline std::chrono::milliseconds inMilliseconds(double seconds)
{
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// What holds for every command.
struct Options {
    bool json = false;
    double timeoutSeconds = 5;

    std::chrono::milliseconds getTimeout() const { return inMilliseconds(timeoutSeconds); }
};

/// The command cannot be carried out as it was given; nothing was sent.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Adds `--json` and `--timeout`: they may stand before the command and after it.
void addOptions(CLI::App& app, Options& options);

/// Adds one command with these options.
/// @param example  a line of use, without the "corvanectl " in front; shown by the command's `--help`
CLI::App& addCommand(CLI::App& app, Options& options, const std::string& name, const std::string& description,
                     const std::string& example);

/// Adds a word that must be given.
void addRequired(CLI::App& command, const std::string& name, std::string& value, const std::string& description);

/// Adds the word that says which application is meant, see Names.h.
/// @return the word, once the command line is parsed
std::shared_ptr<std::string> addUid(CLI::App& command);

void addServerCommands(CLI::App& app, Options& options);      ///< list, call
void addDescribeCommand(CLI::App& app, Options& options);     ///< describe
void addMonitorCommand(CLI::App& app, Options& options);      ///< monitor
void addApplicationCommands(CLI::App& app, Options& options); ///< stats, activate, suspend, terminate
void addKeyCommand(CLI::App& app, Options& options);          ///< key
void addInputCommands(CLI::App& app, Options& options);       ///< input list, input map
void addPropertyCommands(CLI::App& app, Options& options);    ///< state, focus, visibility, opacity, z-order, location
void addTokenCommands(CLI::App& app, Options& options);       ///< token create, token delete

void addBoxCommands(CLI::App& app, Options& options); ///< launch, stop, restart
void addBoxViews(CLI::App& app, Options& options);    ///< ps, history, audit, windows, screenshot

/// Gives the input focus to a window through the process manager, or takes it away, and waits until it is done.
void moveFocus(const std::string& word, bool focus, const Options& options);

} // namespace Corvanectl
