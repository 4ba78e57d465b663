#include "ServerFixture.h"

#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCClient.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace Corvane::Test
{

namespace
{

mode_t modeOf(const std::string& path)
{
    struct stat status {
    };
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

std::string messageOf(RPCServer& server)
{
    try {
        server.init();
        return "no error";
    } catch (const RPCError& error) {
        EXPECT_EQ(error.getReason(), RPCError::Reason::BAD_ADDRESS);
        return error.what();
    }
}

TEST(RPCAddress, IsInTheFolderThatTheEnvironmentNames)
{
    TemporaryDirectory directory;
    ScopedEnvironment own("CORVANE_RUNTIME_DIR", nullptr);
    ScopedEnvironment user("XDG_RUNTIME_DIR", directory.getPath().c_str());
    EXPECT_EQ(TestServer("APP1").getFixedRPCAddress(), directory.getPath() + "/corvane/APP1.sock");
    {
        ScopedEnvironment other("CORVANE_RUNTIME_DIR", "/elsewhere");
        EXPECT_EQ(TestServer("APP1").getFixedRPCAddress(), "/elsewhere/APP1.sock");
    }
    ScopedEnvironment none("XDG_RUNTIME_DIR", nullptr);
    EXPECT_EQ(TestServer("APP1").getFixedRPCAddress(), "/run/corvane/APP1.sock");
}

TEST(RPCAddress, FolderAndSocketAreForTheUserAlone)
{
    TemporaryDirectory directory;
    const std::string folder = directory.getPath() + "/a/b";
    ScopedEnvironment environment("CORVANE_RUNTIME_DIR", folder.c_str());
    const mode_t oldMask = umask(0);
    TestServer server;
    server.init();
    umask(oldMask);
    EXPECT_EQ(modeOf(folder), 0700U);
    EXPECT_EQ(modeOf(folder + "/TEST.sock"), 0600U);
}

TEST(RPCAddress, WithAGroupFolderAndSocketAreForTheGroupToo)
{
    TemporaryDirectory directory;
    const std::string folder = directory.getPath() + "/group";
    const std::string group = std::to_string(getegid());
    ScopedEnvironment environment("CORVANE_RUNTIME_DIR", folder.c_str());
    ScopedEnvironment access("CORVANE_RPC_GROUP", group.c_str());
    TestServer server;
    server.init();
    EXPECT_EQ(modeOf(folder), 03770U);
    EXPECT_EQ(modeOf(folder + "/TEST.sock"), 0660U);
}

TEST(RPCAddress, UnknownGroupIsAClearError)
{
    TemporaryRuntime runtime;
    ScopedEnvironment access("CORVANE_RPC_GROUP", "no-such-group");
    TestServer server;
    EXPECT_EQ(messageOf(server), "CORVANE_RPC_GROUP names the group no-such-group, which does not exist");
}

TEST(RPCAddress, NameCanNeitherLeaveTheFolderNorHide)
{
    TemporaryRuntime runtime;
    const std::string folder = runtime.directory.getPath() + "/";
    EXPECT_EQ(TestServer("APP../../x y").getFixedRPCAddress(), folder + "APP..%2F..%2Fx%20y.sock");
    EXPECT_EQ(TestServer(".hidden").getFixedRPCAddress(), folder + "%2Ehidden.sock");
    EXPECT_EQ(TestServer("a%\xc3\xa9_-B9").getFixedRPCAddress(), folder + "a%25%C3%A9_-B9.sock");
}

TEST(RPCAddress, StrangeNamesAreListedAsTheyAre)
{
    TemporaryRuntime runtime;
    TestServer one("APP/\xc3\xa9");
    TestServer two(".x");
    one.init();
    two.init();
    std::ofstream(runtime.directory.getPath() + "/%2.sock");
    std::ofstream(runtime.directory.getPath() + "/note.txt");
    EXPECT_EQ(RPCClient::listServers(), (std::vector<std::string>{".x", "APP/\xc3\xa9"}));
    EXPECT_EQ(RPCClient(".x").call("ITest::count"), "null");
}

TEST(RPCAddress, PathThatDoesNotFitIsAClearError)
{
    TemporaryRuntime runtime;
    const std::string longName(200, 'n');
    TestServer server(longName.c_str());
    EXPECT_THAT(messageOf(server), testing::HasSubstr("more than the 107 that fit"));
    EXPECT_THROW(RPCClient(longName).call("ITest::count"), RPCError);
}

TEST(RPCAddress, LongestPathThatFitsIsUsed)
{
    TemporaryRuntime runtime;
    const std::string name(107 - runtime.directory.getPath().size() - 1 - 5, 'n');
    TestServer server(name.c_str());
    server.init();
    EXPECT_EQ(server.getFixedRPCAddress().size(), 107U);
    EXPECT_EQ(RPCClient(name).call("ITest::count"), "null");
}

TEST(RPCAddress, FolderThatCannotBeMadeIsAClearError)
{
    ScopedEnvironment environment("CORVANE_RUNTIME_DIR", "/proc/none/corvane");
    TestServer server;
    EXPECT_THAT(messageOf(server), testing::HasSubstr("cannot create the runtime folder /proc/none/corvane"));
}

TEST(RPCAddress, OfALiveServerIsNotTaken)
{
    TemporaryRuntime runtime;
    TestServer first;
    TestServer second;
    first.init();
    EXPECT_THAT(messageOf(second), testing::HasSubstr("a server that is alive listens on"));
    EXPECT_EQ(RPCClient("TEST").call("ITest::count"), "null");
    EXPECT_EQ(first.counted, 1);
    first.shutdown();
    second.init();
    EXPECT_EQ(RPCClient("TEST").call("ITest::count"), "null");
    EXPECT_EQ(second.counted, 1);
}

TEST(RPCAddress, OfADeadServerIsTaken)
{
    TemporaryRuntime runtime;
    TestServer server;
    {
        // A socket that is bound and closed without being removed: what a process leaves that dies.
        FileDescriptor dead(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        server.getFixedRPCAddress().copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(bind(dead.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    EXPECT_TRUE(RPCClient::listServers().empty());
    EXPECT_EQ(RPCClient::listDeadServers(), std::vector<std::string>{"TEST"});
    server.init();
    EXPECT_EQ(RPCClient::listServers(), std::vector<std::string>{"TEST"});
    EXPECT_TRUE(RPCClient::listDeadServers().empty());
    EXPECT_EQ(RPCClient("TEST").call("ITest::count"), "null");
}

TEST(RPCAddress, IsFreeAfterShutdownButAnothersSocketStays)
{
    TemporaryRuntime runtime;
    TestServer first;
    first.init();
    const std::string path = first.getFixedRPCAddress();
    std::filesystem::remove(path);
    TestServer second;
    second.init();
    first.shutdown();
    EXPECT_TRUE(std::filesystem::exists(path));
    second.shutdown();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(RPCAddress, IsInNoFolderThatEverybodyMayWriteTo)
{
    TemporaryRuntime runtime;
    TestServer server;
    for (const mode_t mode : {0777U, 01777U}) {
        chmod(runtime.directory.getPath().c_str(), mode);
        EXPECT_EQ(messageOf(server), "everybody may write to the runtime folder " + runtime.directory.getPath());
    }
    chmod(runtime.directory.getPath().c_str(), 0755);
    EXPECT_EQ(messageOf(server), "no error");
}

TEST(RPCAddress, IsBelievedByNoClientWhereEverybodyMayWriteToTheFolder)
{
    TemporaryRuntime runtime;
    TestServer server;
    server.init();
    chmod(runtime.directory.getPath().c_str(), 01777);
    try {
        RPCClient("TEST").call("ITest::count", "{}");
        FAIL() << "it may be an impostor";
    } catch (const RPCError& error) {
        EXPECT_EQ(error.getReason(), RPCError::Reason::BAD_ADDRESS);
        EXPECT_EQ(error.what(), "everybody may write to the runtime folder " + runtime.directory.getPath());
    }
}

TEST(RPCAddress, IsGivenUpWhereSomebodyHoldsTheFolderAndTellsWhoItIs)
{
    TemporaryRuntime runtime;
    const std::string folder = runtime.directory.getPath();
    const FileDescriptor holder(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
    TestServer server;
    try {
        server.init();
        FAIL() << "the folder is not its own";
    } catch (const RPCError& error) {
        EXPECT_EQ(error.getReason(), RPCError::Reason::TIMED_OUT);
        EXPECT_EQ(error.what(), "the runtime folder " + folder + " is locked by process " + std::to_string(getpid()));
    }
    flock(holder.get(), LOCK_UN);
    EXPECT_EQ(messageOf(server), "no error");
}

} // namespace

} // namespace Corvane::Test
