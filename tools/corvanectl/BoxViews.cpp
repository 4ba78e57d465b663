#include "Commands.h"
#include "Manager.h"
#include "Names.h"
#include "Output.h"
#include "Values.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

/// The commands that show what the process manager knows: ps, history, audit, windows, screenshot.
namespace Corvanectl
{
namespace
{

using simdjson::dom::element;
using Rows = std::vector<std::vector<std::string>>;

/// @return the member in words, "-" for null and for none
std::string show(const element& object, const char* key)
{
    element member;
    return object[key].get(member) == simdjson::SUCCESS && !member.is_null() ? inWords(member) : "-";
}

std::optional<std::uint64_t> findNumber(const element& object, const char* key)
{
    std::uint64_t number = 0;
    return object[key].get(number) == simdjson::SUCCESS ? std::optional(number) : std::nullopt;
}

bool isTrue(const element& object, const char* key)
{
    bool value = false;
    return object[key].get(value) == simdjson::SUCCESS && value;
}

/// The use of the processor between two looks at an application; at the first one, since it started.
class LoadMeter
{
public:
    std::string show(const element& application)
    {
        const auto used = findNumber(application, "processorMs");
        if (!used)
            return "-";
        const auto now = std::chrono::steady_clock::now();
        const std::string process = inWords(application["uid"]) + " " + inWords(application["pid"]);
        const auto earlier = samples.find(process);
        const double spent = static_cast<double>(*used - (earlier == samples.end() ? 0 : earlier->second.usedMs));
        const double passed = earlier == samples.end()
                                  ? 1000.0 * static_cast<double>(findNumber(application, "uptimeSeconds").value_or(0))
                                  : std::chrono::duration<double, std::milli>(now - earlier->second.time).count();
        samples[process] = {*used, now};
        char text[32];
        std::snprintf(text, sizeof text, "%.1f %%", passed > 0 ? 100.0 * spent / passed : 0.0);
        return text;
    }

private:
    struct Sample {
        std::uint64_t usedMs;
        std::chrono::steady_clock::time_point time;
    };
    std::map<std::string, Sample> samples;
};

/// @return "3 d 04:05:06", or "04:05:06" within the first day
std::string showUptime(const element& application)
{
    const auto seconds = findNumber(application, "uptimeSeconds");
    if (!seconds)
        return "-";
    char text[48];
    const unsigned long long days = *seconds / 86400;
    const auto rest = static_cast<unsigned int>(*seconds % 86400);
    if (days > 0)
        std::snprintf(text, sizeof text, "%llu d %02u:%02u:%02u", days, rest / 3600, rest / 60 % 60, rest % 60);
    else
        std::snprintf(text, sizeof text, "%02u:%02u:%02u", rest / 3600, rest / 60 % 60, rest % 60);
    return text;
}

std::string showGivenUp(const element& application)
{
    return "given up after " + show(application, "restartsInRow") + " restarts";
}

/// The lifecycle state; for an application that has not told one, what the process manager is doing with it.
std::string showState(const element& application)
{
    const std::string state = show(application, "state");
    const std::string phase = show(application, "phase");
    if (phase == "given-up")
        return "(" + showGivenUp(application) + ")";
    if (phase == "starting" || phase == "waiting")
        return "(" + phase + ")";
    return state == "-" ? "(" + phase + ")" : state;
}

std::string showMemory(const element& application)
{
    const std::string size = show(application, "residentKb");
    return size == "-" ? size : size + " kB";
}

/// Adds the columns that tell people which application it is: their titles, or what an answer says of one.
void addIdentity(std::vector<std::string>& row)
{
    row.insert(row.end(), {"NAME", "TYPE", "PROGRAM"});
}

void addIdentity(std::vector<std::string>& row, const element& application)
{
    const std::string program = textOf(application, "program");
    for (const std::string& text :
         {textOf(application, "name"), textOf(application, "applicationType"), program.substr(program.rfind('/') + 1)})
        row.push_back(text.empty() ? "-" : makePrintable(text));
}

void printApplications(Manager& manager, LoadMeter& meter, bool json)
{
    const JsonText answer(manager.call("IApplicationManager::getApplications"));
    Rows rows{{"UID", "PID", "STATE", "FOCUS", "Z", "CPU", "MEMORY", "UPTIME", "RESTARTS"}};
    addIdentity(rows.back());
    for (const element application : answer.root.get_array()) {
        if (json) {
            printJson(writeCompact(application));
            continue;
        }
        rows.push_back({show(application, "uid"), show(application, "pid"), showState(application),
                        isTrue(application, "focus") ? "yes" : "-", show(application, "zOrder"),
                        meter.show(application), showMemory(application), showUptime(application),
                        show(application, "restarts")});
        addIdentity(rows.back(), application);
    }
    if (!json)
        printTable(rows);
}

struct Watch {
    std::optional<double> seconds;
    unsigned long count = 0; ///< 0: until it is interrupted
};

void pause(double seconds)
{
    timespec left{.tv_sec = static_cast<time_t>(seconds),
                  .tv_nsec = static_cast<long>((seconds - static_cast<double>(static_cast<long>(seconds))) * 1e9)};
    while (nanosleep(&left, &left) != 0)
        ;
}

void listApplications(const Watch& watch, const Options& options)
{
    Manager manager(options);
    LoadMeter meter;
    if (!watch.seconds)
        return printApplications(manager, meter, options.json);
    const bool clears = !options.json && isatty(STDOUT_FILENO) != 0;
    for (unsigned long shown = 0;;) {
        if (clears)
            std::cout << "\033[H\033[2J";
        printApplications(manager, meter, options.json);
        // Whoever reads has gone, or has seen enough.
        if (!std::cout.flush() || ++shown == watch.count)
            return;
        pause(*watch.seconds);
    }
}

std::string showEnd(const element& end)
{
    std::int64_t number = 0;
    std::string text = "unknown";
    if (end["exitCode"].get(number) == simdjson::SUCCESS)
        text = "exit " + std::to_string(number);
    else if (end["signal"].get(number) == simdjson::SUCCESS)
        text = std::string("SIG") +
               (sigabbrev_np(static_cast<int>(number)) ? sigabbrev_np(static_cast<int>(number)) : "?");
    if (isTrue(end, "ranAway"))
        text += ", ran away";
    if (isTrue(end, "wasStopped"))
        text += ", stopped";
    return text;
}

std::string showStates(const element& end)
{
    const std::string before = show(end, "previousState");
    return (before.empty() || before == "-" ? "" : before + " > ") + show(end, "state");
}

void printLastWords(const element& end, const char* stream, const std::string& mark)
{
    std::string_view words;
    if (end[stream].get(words) != simdjson::SUCCESS)
        return;
    while (!words.empty()) {
        const std::size_t length = std::min(words.find('\n'), words.size());
        printLine(mark + std::string(words.substr(0, length)));
        words.remove_prefix(std::min(length + 1, words.size()));
    }
}

struct HistoryChoice {
    std::string word; ///< what the application is called, empty for all
    unsigned int limit = 20;
};

/// The ends of one application, or of all that had a name, one after the other.
std::vector<element> chooseEnds(const element& answer, const std::string& word)
{
    std::vector<element> ends;
    std::vector<Identity> applications;
    for (const element end : answer.get_array()) {
        ends.push_back(end);
        applications.push_back({textOf(end, "uid"), textOf(end, "name")});
    }
    if (word.empty())
        return ends;
    const std::string uid = choose(word, applications).value_or(word);
    std::erase_if(ends, [&](const element& end) { return textOf(end, "uid") != uid && textOf(end, "name") != word; });
    return ends;
}

void showHistory(const HistoryChoice& choice, const Options& options)
{
    Manager manager(options);
    // Of all that is remembered: the limit counts what is shown.
    const JsonText answer(manager.call("IApplicationManager::getHistory"));
    const std::vector<element> chosen = chooseEnds(answer.root, choice.word);
    const std::size_t first = chosen.size() > choice.limit ? chosen.size() - choice.limit : 0;
    for (std::size_t i = first; i < chosen.size(); ++i) {
        const element& end = chosen[i];
        if (options.json) {
            printJson(writeCompact(end));
            continue;
        }
        const std::string who = show(end, "time") + "  " + show(end, "uid") + "  ";
        if (show(end, "record") == "given-up") {
            printLine(who + showGivenUp(end) + "  " + show(end, "program"));
            continue;
        }
        printLine(who + "pid " + show(end, "pid") + "  " + showEnd(end) + "  " + showStates(end) + "  " +
                  show(end, "program"));
        printLastWords(end, "standardOutput", "    > ");
        printLastWords(end, "standardError", "    | ");
    }
}

/// @return the name of a user of this machine, or the number
std::string showUser(const element& deed)
{
    const auto number = findNumber(deed, "user");
    const passwd* const entry = number ? getpwuid(static_cast<uid_t>(*number)) : nullptr;
    return entry == nullptr ? show(deed, "user") : makePrintable(entry->pw_name);
}

void showAudit(unsigned int limit, const Options& options)
{
    Manager manager(options);
    const JsonText answer(manager.call("IApplicationManager::getAudit", writeObject("limit", std::to_string(limit))));
    Rows rows{{"TIME", "USER", "PID", "PROGRAM", "OUTCOME", "METHOD", "SUBJECT", "PROBLEM"}};
    for (const element deed : answer.root.get_array()) {
        if (options.json)
            printJson(writeCompact(deed));
        else
            rows.push_back({show(deed, "time"), showUser(deed), show(deed, "pid"), show(deed, "program"),
                            show(deed, "outcome"), show(deed, "method"), show(deed, "subject"), show(deed, "problem")});
    }
    if (!options.json)
        printTable(rows);
}

void listWindows(const Options& options)
{
    Manager manager(options);
    const JsonText answer(manager.call("IWindowCompositing::getWindows"));
    std::vector<element> windows;
    for (const element window : answer.root.get_array())
        windows.push_back(window);
    // The front of the stack stands on top.
    std::reverse(windows.begin(), windows.end());
    Rows rows{{"INDEX", "UID", "Z", "VISIBLE", "OPACITY", "LOCATION", "FOCUS"}};
    addIdentity(rows.back());
    for (const element& window : windows) {
        if (options.json) {
            printJson(writeCompact(window));
            continue;
        }
        rows.push_back({show(window, "index"), show(window, "uid"), show(window, "zOrder"),
                        isTrue(window, "visibility") ? "yes" : "no", show(window, "opacity"),
                        showLocation(writeCompact(window["location"])), isTrue(window, "focus") ? "yes" : "-"});
        addIdentity(rows.back(), window);
    }
    if (!options.json)
        printTable(rows);
}

/// How long a picture may take: DirectFB may still be starting.
constexpr std::chrono::seconds SCREENSHOT_PATIENCE{30};

void saveScreenshot(const std::string& file, const Options& options)
{
    Manager manager(options);
    manager.listen();
    const std::string saved = showPlain(manager.call("IWindowCompositing::screenshot"));
    manager.await("file", saved, "onScreenshot", "onScreenshotFailure", SCREENSHOT_PATIENCE, "file");
    std::ifstream picture(saved, std::ios::binary);
    if (!picture)
        throw std::system_error(errno, std::generic_category(), "cannot read " + saved);
    std::ofstream copy(file, std::ios::binary);
    if (!copy || !(copy << picture.rdbuf()).flush())
        throw std::system_error(errno, std::generic_category(), "cannot write " + file);
    if (options.json)
        printJson(writeObject("file", writeString(file)));
}

} // namespace

void addBoxViews(CLI::App& app, Options& options)
{
    CLI::App& ps = addCommand(app, options, "ps", "Lists the applications of the box", "ps --watch");
    const auto watch = std::make_shared<Watch>();
    ps.add_option("--watch", watch->seconds, "Show them again and again, every so many seconds (default: 2)")
        ->expected(0, 1)
        ->default_str("2")
        ->check(CLI::Range(0.01, 86400.0))
        ->option_text("[SECONDS]");
    ps.add_option("--count", watch->count, "With --watch: end after so many times")
        ->check(CLI::Range(1UL, 4294967295UL))
        ->option_text("N");
    ps.callback([watch, &options] { listApplications(*watch, options); });

    CLI::App& history = addCommand(app, options, "history", "Shows how applications ended, the latest last", "history");
    const auto choice = std::make_shared<HistoryChoice>();
    history.add_option("UID", choice->word, "Of one application only: its uid or name, or how one of them begins")
        ->option_text(" ");
    history.add_option("--limit", choice->limit, "How many ends to show (default: 20)")->option_text("N");
    history.callback([choice, &options] { showHistory(*choice, options); });

    CLI::App& audit = addCommand(app, options, "audit",
                                 "Shows who did what with the box and who was refused what, the latest last", "audit");
    const auto limit = std::make_shared<unsigned int>(50);
    audit.add_option("--limit", *limit, "How many entries to show (default: 50)")->option_text("N");
    audit.callback([limit, &options] { showAudit(*limit, options); });

    CLI::App& windows =
        addCommand(app, options, "windows", "Lists the windows of the box, the front of the stack first", "windows");
    windows.callback([&options] { listWindows(options); });

    CLI::App& screenshot =
        addCommand(app, options, "screenshot", "Saves what the screen of the box shows", "screenshot box.png");
    const auto file = std::make_shared<std::string>();
    addRequired(screenshot, "FILE", *file, "PNG file to write");
    screenshot.callback([file, &options] { saveScreenshot(*file, options); });
}

} // namespace Corvanectl
