#include "ProcmandFixture.h"

#include <algorithm>
#include <corvane/common/RPCError.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <support/TaskState.h>

using namespace Corvane::Test;

namespace
{

/// The process manager dies at one point of its work, see KillPoints.cpp, and another one takes over.
class ProcmandKill : public WithProcmand, public testing::WithParamInterface<const char*>
{
protected:
    void startDoomed()
    {
        ScopedEnvironment library("LD_PRELOAD", PROCMAND_KILL_POINTS);
        ScopedEnvironment point("CORVANE_TEST_KILL_AT", GetParam());
        startProcmand(OPTIONS);
    }
    /// Asks for the application. @return whether that was answered
    bool launchFaithful()
    {
        try {
            call("IApplicationManager::launch",
                 R"({"uid":"faithful","program":"/bin/sleep","arguments":["1000"],"restart":"always"})");
            return true;
        } catch (const Corvane::RPCError&) {
            return false;
        }
    }
    void awaitDeath()
    {
        ASSERT_EQ(procmand->wait().signal, SIGKILL) << "the point is never reached";
        // A process that it has just forked has its socket, until it is on its own.
        ASSERT_TRUE(await([] { return Corvane::RPCClient::listServers().empty(); }));
        client.reset();
    }
    /// The processes that run the program, whoever knows them.
    std::vector<pid_t> findFaithful() const
    {
        std::vector<pid_t> found;
        for (const auto& process : std::filesystem::directory_iterator("/proc")) {
            const pid_t pid = std::atoi(process.path().filename().c_str());
            std::ifstream file(process.path() / "environ");
            const std::string environment{std::istreambuf_iterator<char>(file), {}};
            if (pid != 0 && readTaskState(process.path()) != 'Z' &&
                environment.find(runtime.directory.getPath()) != environment.npos &&
                environment.find(R"("authorizationToken":"faithful")") != environment.npos)
                found.push_back(pid);
        }
        return found;
    }
    /// Whether there is one process, which the process manager knows and would start again.
    bool isThereOnce()
    {
        const std::vector<pid_t> processes = findFaithful();
        auto members = find("faithful");
        return processes.size() == 1 && members["phase"] == "running" && members["restart"] == "always" &&
               members["pid"] == std::to_string(processes.front());
    }

    static inline const Words OPTIONS{"--restart-delay", "0.02", "--restart-delay-limit", "0.02"};
};

/// At its first start.
using ProcmandKillAtLaunch = ProcmandKill;
/// At its second start, and at the end before it.
using ProcmandKillAtRestart = ProcmandKill;

std::string nameOf(const testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

} // namespace

TEST_P(ProcmandKillAtLaunch, LeavesTheApplicationThereOnceAndKnown)
{
    startDoomed();
    const bool isAnswered = launchFaithful();
    ASSERT_NO_FATAL_FAILURE(awaitDeath());

    startProcmand(OPTIONS);
    if (isAnswered || GetParam() != std::string("before record 1"))
        EXPECT_TRUE(await([this] { return isThereOnce(); })) << findFaithful().size() << " processes";
    else
        EXPECT_TRUE(findFaithful().empty() && find("faithful").empty()) << "it was never accepted";
    EXPECT_EQ(announcements.count({"onLaunchFailure"}), 0U);
}

TEST_P(ProcmandKillAtRestart, LeavesTheApplicationThereOnceAndKnown)
{
    startDoomed();
    ASSERT_TRUE(launchFaithful());
    ASSERT_TRUE(await([this] { return isThereOnce(); }));
    kill(findFaithful().front(), SIGKILL);
    ASSERT_NO_FATAL_FAILURE(awaitDeath());

    startProcmand(OPTIONS);
    EXPECT_TRUE(await([this] { return isThereOnce(); })) << findFaithful().size() << " processes";
}

// The records: that it is to be started, and its process.
INSTANTIATE_TEST_SUITE_P(Point, ProcmandKillAtLaunch,
                         testing::Values("before record 1", "after record 1", "before fork 1", "after fork 1",
                                         "before record 2", "after record 2", "before word 1", "after word 1",
                                         "before exec 1"),
                         nameOf);

// The records: its end and that it waits, that it is to be started again, and its process.
INSTANTIATE_TEST_SUITE_P(Point, ProcmandKillAtRestart,
                         testing::Values("before record 3", "after record 3", "before record 4", "after record 4",
                                         "before fork 2", "after fork 2", "before record 5", "after record 5",
                                         "before word 2", "after word 2", "before exec 2"),
                         nameOf);
