#include "ProcmandFixture.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <support/TaskState.h>

using namespace Corvane::Test;

namespace
{

/// What applications start themselves.
class ProcmandHelper : public WithProcmand
{
protected:
    /// Launches an application with a helper in a session of its own that ignores SIGTERM.
    /// @param last  what the application itself does in the end
    std::string launchWithHelper(const std::string& last, const std::string& more = "")
    {
        const std::string uid =
            launchShell("setsid sh -c 'trap \"\" TERM; exec sleep 1234' & " + last, more.empty() ? "" : more);
        EXPECT_TRUE(await([this] { return countHelpers() > 0; }));
        return uid;
    }
    /// How many processes of this runtime folder are helpers.
    std::size_t countHelpers() const
    {
        std::size_t count = 0;
        for (const auto& process : std::filesystem::directory_iterator("/proc"))
            if (std::atoi(process.path().filename().c_str()) != 0 &&
                contentOf(process.path() / "cmdline") == std::string("sleep\0001234\0", 11) &&
                contentOf(process.path() / "environ").find(runtime.directory.getPath()) != std::string::npos)
                ++count;
        return count;
    }
    bool areHelpersGone() const
    {
        return await([this] { return countHelpers() == 0; });
    }
    static std::string contentOf(const std::filesystem::path& path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

} // namespace

TEST_F(ProcmandHelper, GoesWithTheApplicationThatIsStopped)
{
    startProcmand();
    const std::string uid = launchWithHelper("exec sleep 1000");
    corvanectl({"stop", uid});

    EXPECT_TRUE(areHelpersGone());
    EXPECT_TRUE(find(uid).empty());
}

TEST_F(ProcmandHelper, GoesWithTheApplicationThatEnds)
{
    startProcmand();
    launchWithHelper("until [ -e " + state.getPath() + "/go ]; do sleep 0.01; done");
    std::ofstream(state.getPath() + "/go").close();

    EXPECT_TRUE(areHelpersGone());
}

TEST_F(ProcmandHelper, OfTheNextRunIsLeftAlone)
{
    startProcmand({"--restart-delay", "0.001"});
    const std::string uid = launchWithHelper("exec sleep 1000", R"("restart":"always")");
    for (int i = 0; i < 5; ++i) {
        kill(pidOf(uid), SIGKILL);
        ASSERT_NE(announcements.take({"IApplicationManager::onLaunch ", uid}), "");
        EXPECT_TRUE(await([this] { return countHelpers() == 1; }));
        EXPECT_EQ(find(uid)["phase"], "running");
    }
}

TEST_F(ProcmandHelper, GoesWithTheApplicationThatEndedWhileNobodyWatched)
{
    startProcmand();
    const std::string uid = launchWithHelper("exec sleep 1000");
    const pid_t pid = pidOf(uid);
    killProcmand();
    kill(pid, SIGKILL);
    ASSERT_TRUE(await([pid] { return kill(pid, 0) != 0 || readTaskState("/proc/" + std::to_string(pid)) == 'Z'; }));
    ASSERT_EQ(countHelpers(), 1U);

    startProcmand();
    EXPECT_TRUE(areHelpersGone());
}
