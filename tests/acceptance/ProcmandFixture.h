#pragma once

#include "Programs.h"

#include <corvane/common/RPCClient.h>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace Corvane::Test
{

/// Everything that the process manager has announced, in its order: "IApplicationManager::onLaunch {...}".
class Announcements
{
public:
    void add(std::string announcement);
    /// Waits for an announcement behind the last one that was taken which contains all of these texts, and takes it.
    /// @return empty when there was none before the deadline
    std::string take(const std::vector<std::string>& texts);
    /// All so far.
    std::vector<std::string> getAll();
    /// How many of all so far contain all of these texts.
    std::size_t count(const std::vector<std::string>& texts);

private:
    std::mutex mutex;
    std::vector<std::string> all;
    std::size_t taken = 0;
};

/// Tests of corvane-procmand, in a runtime folder and a state folder of their own. What was launched is killed at the
/// end, whatever happened.
class WithProcmand : public testing::Test
{
protected:
    ~WithProcmand() override;

    /// Starts the process manager and listens to it. Its deadlines are short unless the options say something else.
    void startProcmand(const Words& options = {});
    /// Kills it, as a fault of its own would.
    void killProcmand();
    /// Ends it and waits for its end. @return its exit status, -1 when it did not end by itself
    int endProcmand();

    std::string call(const std::string& method, const std::string& parameters = "{}");
    /// What the process manager refuses a call with.
    std::string refusalOf(const std::string& method, const std::string& parameters = "{}");

    /// Launches through the process manager and waits until the program runs.
    /// @param more  further members of the request, as JSON: "\"restart\":\"always\""
    /// @return the uid
    std::string launch(const std::string& program, const Words& arguments = {}, const std::string& more = "");
    /// Launches a shell that carries out the command.
    std::string launchShell(const std::string& command, const std::string& more = "");
    /// Launches the test's own window application and waits until it runs and has been heard of.
    /// @param parameters  see ProcmandVictim.cpp
    std::string launchVictim(const std::string& parameters = "", const std::string& more = "");

    /// Launches one that never proves that it is alive, so that it runs away. @param more  as above, behind a comma
    std::string launchQuietVictim(const std::string& more = "");

    /// The members of an application in the list of the process manager, as words; empty when it is not in it.
    std::map<std::string, std::string> find(const std::string& uid);
    bool awaitMember(const std::string& uid, const std::string& member, const std::string& value);
    pid_t pidOf(const std::string& uid);
    /// Whether the socket of an application's control server is there, with a server behind it or without.
    bool hasSocket(const std::string& uid) const;
    /// Sends a fatal signal while the main thread sleeps: one that finds it inside malloc or a lock may hang it.
    void killAtRest(const std::string& uid, int signal);
    /// Stops an application as a whole; returns when its last thread has stopped.
    void freeze(const std::string& uid);

    TemporaryRuntime runtime;
    TemporaryDirectory state;
    std::unique_ptr<ChildProcess> procmand;
    Announcements announcements;
    std::unique_ptr<RPCClient> client;
};

/// A JSON object of texts: `write({{"uid", "demo"}})`.
std::string write(std::initializer_list<std::pair<std::string, std::string>> members);

/// The members of a JSON object as texts; what is neither a text nor a number nor a truth value is left out.
std::map<std::string, std::string> readMembers(const std::string& json);

} // namespace Corvane::Test
