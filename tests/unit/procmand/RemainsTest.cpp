#include "launch/Remains.h"

#include "launch/Token.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

using Corvane::Test::ChildProcess;

bool isEnclosed(pid_t pid, const std::string& mark)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/cgroup");
    const std::string groups{std::istreambuf_iterator<char>(file), {}};
    return groups.find("corvane-" + mark) != groups.npos;
}

} // namespace

TEST(Remains, AreFoundByTheirMarkWhereThereIsNoCgroup)
{
    const std::string mark = makeToken();
    ChildProcess helper({"setsid", "sleep", "1000"}, {{MARK_VARIABLE, mark}});
    ChildProcess stranger({"sleep", "1000"}, {{MARK_VARIABLE, makeToken()}});
    killRemains(mark);

    EXPECT_EQ(helper.wait().signal, SIGKILL);
    EXPECT_FALSE(stranger.wait(std::chrono::milliseconds(100)).signal);
}

TEST(Remains, AreNothingWhereTheMarkIsNone)
{
    ChildProcess helper({"sleep", "1000"}, {{MARK_VARIABLE, ""}});
    killRemains("");
    killRemains("../..");

    EXPECT_FALSE(helper.wait(std::chrono::milliseconds(100)).signal);
}

TEST(Remains, AreInACgroupWhateverTheirEnvironmentSays)
{
    const std::string mark = makeToken();
    const Corvane::Test::TemporaryDirectory folder;
    const std::string file = folder.getPath() + "/go";
    ChildProcess leader(
        {"sh", "-c", "until [ -e " + file + " ]; do sleep 0.01; done; env -i setsid sh -c 'echo there; sleep 1000'"});
    enclose(mark, leader.getPid());
    if (!isEnclosed(leader.getPid(), mark))
        GTEST_SKIP() << "no cgroup can be made here";
    std::ofstream(file).close();
    ASSERT_TRUE(leader.awaitOutput("there"));
    killRemains(mark);

    EXPECT_EQ(leader.wait().signal, SIGKILL);
}

} // namespace Procmand
