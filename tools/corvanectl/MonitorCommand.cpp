#include "Commands.h"
#include "EndSignals.h"
#include "Manager.h"
#include "Names.h"
#include "Output.h"

#include <corvane/common/RPCError.h>
#include <corvane/foundation/Serializer.h>
#include <ctime>
#include <iostream>
#include <memory>
#include <mutex>

namespace Corvanectl
{
namespace
{

/// The time of day with milliseconds, as the machine's clock shows it.
std::string tellTime()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    char text[16];
    const std::size_t length = std::strftime(text, sizeof text, "%H:%M:%S", &parts);
    const std::string milliseconds = std::to_string(1000 + now.tv_nsec / 1000000);
    return std::string(text, length) + "." + milliseconds.substr(1);
}

/// Prints what servers tell, each line at once; called by the threads of several clients.
class Reporter
{
public:
    /// @param limit  number of notifications after which the command ends; 0: never
    Reporter(bool json, unsigned long limit) : json(json), limit(limit) {}

    void reportNotification(const std::string& server, const std::string& name, const std::string& payload)
    {
        std::lock_guard guard(mutex);
        if (limit > 0 && count == limit)
            return;
        print(json ? writeNotification(server, name, payload)
                   : findSubject(server, payload) + "  " + makePrintable(name) + describeFields(payload));
        if (++count == limit)
            EndSignals::raise();
    }

    void reportConnection(const std::string& server, bool connected)
    {
        std::lock_guard guard(mutex);
        print(json ? writeConnection(server, connected)
                   : makePrintable(uidOf(server)) + "  " + (connected ? "is watched" : "is gone"));
    }

private:
    /// A reader sees each line as soon as it is written; a reader that is gone ends the command.
    void print(const std::string& text)
    {
        json ? printJson(text) : printLine(tellTime() + "  " + text);
        if (!std::cout.flush())
            EndSignals::raise();
    }

    /// Whom a notification is about: the process manager names the application in it.
    static std::string findSubject(const std::string& server, const std::string& payload)
    {
        std::string_view uid;
        const JsonText fields(payload);
        const bool isNamed = server == MANAGER && fields.root["uid"].get(uid) == simdjson::SUCCESS && !uid.empty();
        return makePrintable(isNamed ? std::string(uid) : uidOf(server));
    }

    /// The members but the uid, which the line begins with.
    static std::string describeFields(const std::string& payload)
    {
        const JsonText fields(payload);
        if (!fields.root.is_object())
            return "  " + inWords(fields.root);
        std::string text;
        for (const auto& [key, value] : fields.root.get_object())
            if (key != "uid")
                text += "  " + makePrintable(key) + "=" + inWords(value);
        return text;
    }

    static std::string writeNotification(const std::string& server, const std::string& name, const std::string& payload)
    {
        Corvane::Serializer serializer;
        serializer.beginObject("");
        serializer.writeString("server", server);
        serializer.writeString("notification", name);
        serializer.writeJson("params", payload);
        serializer.endObject("");
        return serializer.generate();
    }

    static std::string writeConnection(const std::string& server, bool connected)
    {
        Corvane::Serializer serializer;
        serializer.beginObject("");
        serializer.writeString("server", server);
        serializer.writeBoolean("connected", connected);
        serializer.endObject("");
        return serializer.generate();
    }

    const bool json;
    const unsigned long limit;
    std::mutex mutex;
    unsigned long count = 0;
};

std::vector<std::string> findServers(const std::vector<std::string>& uids, const Options& options)
{
    // The process manager tells what all applications tell: one connection sees the whole box.
    if (uids.empty() && hasManager())
        return {MANAGER};
    if (uids.empty())
        return Corvane::RPCClient::listServers();
    std::vector<std::string> names;
    for (const std::string& uid : uids)
        names.push_back(findServerName(uid, options));
    return names;
}

void monitor(const std::vector<std::string>& uids, unsigned long limit, const Options& options)
{
    const EndSignals endSignals;
    Reporter reporter(options.json, limit);
    std::vector<std::unique_ptr<Corvane::RPCClient>> clients;
    for (const std::string& name : findServers(uids, options)) {
        clients.push_back(std::make_unique<Corvane::RPCClient>(name));
        clients.back()->subscribe(
            {"*"},
            [&reporter, name](const std::string& notification, const std::string& payload) {
                reporter.reportNotification(name, notification, payload);
            },
            [&reporter, name](bool connected) { reporter.reportConnection(name, connected); }, options.getTimeout());
    }
    if (clients.empty())
        throw Corvane::RPCError(Corvane::RPCError::Reason::NO_SERVER, 7, "no server lives here");
    endSignals.wait();
}

struct Arguments {
    std::vector<std::string> uids;
    unsigned long limit = 0;
};

} // namespace

void addMonitorCommand(CLI::App& app, Options& options)
{
    CLI::App& command = addCommand(app, options, "monitor",
                                   "Prints each notification as it comes, and when a server goes and comes back, until "
                                   "it is interrupted",
                                   "monitor --count 1 demo");
    const auto arguments = std::make_shared<Arguments>();
    command
        .add_option("UID", arguments->uids, "Whom to watch; without any: the whole box, or every server that lives now")
        ->option_text("...");
    command.add_option("--count", arguments->limit, "End after so many notifications")
        ->check(CLI::Range(1UL, 4294967295UL))
        ->option_text("N");
    command.callback([arguments, &options] { monitor(arguments->uids, arguments->limit, options); });
}

} // namespace Corvanectl
