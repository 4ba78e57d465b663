#include "ProcmandFixture.h"

#include <corvane/common/FileDescriptor.h>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::Not;

namespace
{

/// What the process manager hears of its applications, and what one of them can cost the others.
class ProcmandLinks : public WithProcmand
{
protected:
    /// A server by its socket only: it takes connections, as the system does that, and answers nothing.
    Corvane::FileDescriptor listenAs(const std::string& server) const
    {
        Corvane::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = runtime.directory.getPath() + "/" + server + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(socket.get(), 8), 0);
        return socket;
    }

    /// @return a figure of the process manager in /proc
    long readStatus(const std::string& name) const
    {
        std::ifstream status("/proc/" + std::to_string(procmand->getPid()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(name + ":"))
                return std::stol(line.substr(name.size() + 1));
        return -1;
    }
};

} // namespace

TEST_F(ProcmandLinks, DoNotLetALaunchWaitForServersThatAnswerNothing)
{
    std::vector<Corvane::FileDescriptor> silent;
    for (int i = 0; i < 150; ++i)
        silent.push_back(listenAs("APPsilent" + std::to_string(i)));
    // Whoever waits for one of them, waits longer than this test.
    startProcmand({"--call-deadline", "1000", "--keep-alive-deadline", "1000"});
    ASSERT_TRUE(await([this] { return !find("silent149").empty(); }));

    EXPECT_EQ(find(launchVictim())["state"], "RUNNING");
}

TEST_F(ProcmandLinks, NeedTheSameThreadsForAnyNumberOfApplications)
{
    startProcmand();
    ASSERT_EQ(find(launchVictim())["state"], "RUNNING");
    const long threads = readStatus("Threads");
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(find(launchVictim())["state"], "RUNNING");

    EXPECT_EQ(readStatus("Threads"), threads);
}

TEST_F(ProcmandLinks, HearTheFirstKeepAliveOfEveryApplication)
{
    startProcmand({"--keep-alive-deadline", "1000"});
    // These prove that they live when they begin, and then no more for a long time.
    for (int i = 0; i < 20; ++i) {
        const std::string uid = launch(HELLO_WINDOW, {}, R"("applicationType":"hello")");
        EXPECT_NE(announcements.take({"IApplication::onKeepAlive", uid}), "");
    }
}

TEST_F(ProcmandLinks, BoundWhatApplicationsCostThatFlood)
{
    startProcmand({"--keep-alive-deadline", "1000"});
    const std::string healthy = launchVictim();
    const long before = readStatus("VmHWM");
    std::vector<std::string> flooding;
    for (int i = 0; i < 10; ++i)
        flooding.push_back(launchVictim("flooding"));
    for (const std::string& uid : flooding)
        EXPECT_TRUE(await([&] { return procmand->getError().find(uid + " floods") != std::string::npos; }));

    // Among all the noise, what matters of the others and of themselves.
    call("IApplicationManager::getApplications");
    corvanectl({"state", healthy, "SUSPENDING"});
    EXPECT_TRUE(awaitMember(healthy, "state", "SUSPENDING"));
    for (const std::string& uid : flooding)
        kill(pidOf(uid), SIGKILL);
    for (const std::string& uid : flooding)
        EXPECT_TRUE(await([&] { return announcements.count({"IApplicationManager::onEnd", uid}) == 1; }));
    EXPECT_THAT(procmand->getError(), Not(HasSubstr(healthy + " floods")));
    constexpr long MEGABYTE = 1024;
    EXPECT_LT(readStatus("VmHWM") - before, 300 * MEGABYTE) << "it was thousands within a second";
}
