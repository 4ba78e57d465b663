#include "ProcmandFixture.h"

#include <corvane/common/FileDescriptor.h>
#include <support/Await.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace Corvane::Test;

namespace
{

/// The process manager as a service manager of the system starts it, which this test is.
class ProcmandService : public WithProcmand
{
protected:
    ProcmandService() : socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, path.size());
        EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    /// Whether this is told before the deadline; what is told before it is passed over.
    bool awaitWord(const std::string& word)
    {
        return await([&] {
            char text[100];
            const ssize_t size = recv(socket.get(), text, sizeof text, MSG_DONTWAIT);
            return size > 0 && std::string(text, static_cast<std::size_t>(size)) == word;
        });
    }

    const std::string path = state.getPath() + "/notify";
    const Corvane::FileDescriptor socket;
    const ScopedEnvironment notify{"NOTIFY_SOCKET", path.c_str()};
    const ScopedEnvironment watchdog{"WATCHDOG_USEC", "20000"};
};

} // namespace

TEST_F(ProcmandService, TellsThatItServesThatItsLoopTurnsAndThatItEnds)
{
    startProcmand();
    EXPECT_TRUE(awaitWord("READY=1"));
    EXPECT_TRUE(awaitWord("WATCHDOG=1"));
    EXPECT_TRUE(awaitWord("WATCHDOG=1")) << "again";
    EXPECT_EQ(endProcmand(), 0);
    EXPECT_TRUE(awaitWord("STOPPING=1"));
}

TEST_F(ProcmandService, KeepsTheApplicationsFromTellingInItsName)
{
    startProcmand();
    const std::string uid = launchShell("echo ${NOTIFY_SOCKET:-none} ${WATCHDOG_USEC:-none}");
    EXPECT_NE(announcements.take({"IApplicationManager::onEnd", uid, "none none"}), "");
}
