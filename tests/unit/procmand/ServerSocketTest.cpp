#include "box/ServerSocket.h"

#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCServer.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

class ServerSocketTest : public testing::Test
{
protected:
    /// Leaves what a server leaves that dies.
    void leaveSocket() const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, path.size());
        const Corvane::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(socket.get(), 1), 0);
    }
    bool exists() const { return access(path.c_str(), F_OK) == 0; }

    Corvane::Test::TemporaryRuntime runtime;
    const std::string path = findSocketPath("APPtester");
};

} // namespace

TEST_F(ServerSocketTest, IsRemovedWhenItsServerIsDead)
{
    leaveSocket();
    EXPECT_TRUE(removeDeadSocket("APPtester"));
    EXPECT_FALSE(exists());
    EXPECT_TRUE(removeDeadSocket("APPtester")) << "there is none";
}

TEST_F(ServerSocketTest, StaysWhereAServerLives)
{
    Corvane::RPCServer server("APPtester");
    server.init();

    EXPECT_TRUE(removeDeadSocket("APPtester"));
    EXPECT_TRUE(exists());
    EXPECT_EQ(findServer("APPtester").value().getPid(), getpid());
}

TEST_F(ServerSocketTest, StaysWhileANameChangesHands)
{
    leaveSocket();
    Corvane::FileDescriptor folder(open(runtime.directory.getPath().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(flock(folder.get(), LOCK_EX), 0);

    EXPECT_FALSE(removeDeadSocket("APPtester"));
    EXPECT_TRUE(exists());
    folder.reset();
    EXPECT_TRUE(removeDeadSocket("APPtester"));
    EXPECT_FALSE(exists());
}

TEST_F(ServerSocketTest, IsNotAnyFileOfThatName)
{
    ASSERT_TRUE(Corvane::FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)).isOpen());
    EXPECT_TRUE(removeDeadSocket("APPtester"));
    EXPECT_TRUE(exists());
    EXPECT_FALSE(findServer("APPtester"));
}

} // namespace Procmand
