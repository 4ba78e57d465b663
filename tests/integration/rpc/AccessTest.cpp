#include "ServerFixture.h"

#include <corvane/common/RPCClient.h>
#include <corvane/common/RPCError.h>
#include <csignal>
#include <functional>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

constexpr uid_t STRANGER = 54321;
constexpr gid_t STRANGERS_GROUP = 54322;
constexpr gid_t ACCESS_GROUP = 54323;

/// Who connects to the server: other users, in child processes. Needs root, to become them.
class RPCAccess : public testing::Test
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "needs root";
        chmod(runtime.directory.getPath().c_str(), 0755);
    }

    void start()
    {
        server.init();
        // The file would keep strangers out before they reach the server: it is the server's own check that is tested.
        chmod(server.getFixedRPCAddress().c_str(), 0666);
    }

    /// @return whether the server answers a call of that user
    bool isServed(uid_t user, gid_t group, const std::vector<gid_t>& furtherGroups)
    {
        const pid_t child = fork();
        if (child == 0) {
            if (setgroups(furtherGroups.size(), furtherGroups.data()) != 0 || setgid(group) != 0 || setuid(user) != 0)
                _exit(2);
            RawClient client(server.getFixedRPCAddress());
            const std::string answer = client.call(R"({"jsonrpc":"2.0","id":1,"method":"ITest::count"})");
            if (answer == R"({"jsonrpc":"2.0","id":1,"result":null})")
                _exit(0);
            _exit(answer.find("permission denied") != answer.npos ? 1 : 2);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
        return WEXITSTATUS(status) == 0;
    }

    TemporaryRuntime runtime;
    TestServer server;
};

TEST_F(RPCAccess, IsForRootAndTheServersOwnUser)
{
    start();
    EXPECT_TRUE(isServed(0, 0, {}));
    EXPECT_FALSE(isServed(STRANGER, STRANGERS_GROUP, {}));
    EXPECT_FALSE(isServed(STRANGER, ACCESS_GROUP, {}));
}

TEST_F(RPCAccess, IsForMembersOfTheGroupThatTheEnvironmentNames)
{
    ScopedEnvironment access("CORVANE_RPC_GROUP", std::to_string(ACCESS_GROUP).c_str());
    start();
    EXPECT_TRUE(isServed(STRANGER, ACCESS_GROUP, {}));
    EXPECT_TRUE(isServed(STRANGER, STRANGERS_GROUP, {ACCESS_GROUP}));
    std::vector<gid_t> many;
    for (gid_t group = 0; group < 200; ++group)
        many.push_back(60000 + group);
    EXPECT_FALSE(isServed(STRANGER, STRANGERS_GROUP, many));
    many.push_back(ACCESS_GROUP);
    EXPECT_TRUE(isServed(STRANGER, STRANGERS_GROUP, many));
}

/// Servers and clients of several users in one folder. Needs root, to become them.
class RPCTrust : public RPCAccess
{
protected:
    /// Gives the folder to a user, and lets the access group in.
    void giveFolder(uid_t owner)
    {
        const char* const folder = runtime.directory.getPath().c_str();
        ASSERT_EQ(chown(folder, owner, ACCESS_GROUP), 0);
        ASSERT_EQ(chmod(folder, 03770), 0);
    }
    static void become(uid_t user)
    {
        if (setgroups(0, nullptr) != 0 || setgid(ACCESS_GROUP) != 0 || setuid(user) != 0)
            _exit(2);
    }
    /// Runs the server as this user until the end of the test.
    void serveAs(uid_t user)
    {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        serverProcess = fork();
        if (serverProcess == 0) {
            become(user);
            server.init();
            (void)!write(ready[1], "!", 1);
            for (;;)
                pause();
        }
        close(ready[1]);
        char byte{};
        ASSERT_EQ(read(ready[0], &byte, 1), 1) << "the server does not come up";
        close(ready[0]);
    }
    void endServer()
    {
        if (serverProcess <= 0)
            return;
        kill(serverProcess, SIGKILL);
        waitpid(serverProcess, nullptr, 0);
        serverProcess = 0;
        unlink(server.getFixedRPCAddress().c_str()); // another user may not
    }
    void TearDown() override { endServer(); }
    /// @return whether a client of this user takes the server for what its name says
    static bool isBelievedBy(uid_t user)
    {
        const pid_t child = fork();
        if (child == 0) {
            become(user);
            try {
                RPCClient("TEST").call("ITest::count", "{}");
                _exit(0);
            } catch (const RPCError& error) {
                _exit(error.getReason() == RPCError::Reason::BAD_ADDRESS ? 1 : 2);
            }
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
        return WEXITSTATUS(status) == 0;
    }
    /// @return why no server comes up
    std::string problemOfServer()
    {
        try {
            server.init();
            return "no problem";
        } catch (const RPCError& error) {
            return error.what();
        }
    }

    static constexpr uid_t OWNER = 54324;
    static constexpr uid_t MEMBER = 54325;
    ScopedEnvironment access{"CORVANE_RPC_GROUP", std::to_string(ACCESS_GROUP).c_str()};
    pid_t serverProcess = 0;
};

TEST_F(RPCTrust, IsNotForAServerOfJustAnyUserWhoMayWriteToTheFolder)
{
    giveFolder(0);
    serveAs(MEMBER);
    EXPECT_TRUE(isBelievedBy(MEMBER)) << "it is the client's own";
    EXPECT_TRUE(isBelievedBy(0)) << "who let the member in";
    EXPECT_FALSE(isBelievedBy(STRANGER));
}

TEST_F(RPCTrust, IsForTheServersOfTheFoldersOwnerAndOfRoot)
{
    giveFolder(OWNER);
    serveAs(OWNER);
    EXPECT_TRUE(isBelievedBy(STRANGER));
    endServer();
    serveAs(0);
    EXPECT_TRUE(isBelievedBy(STRANGER));
    endServer();
    serveAs(MEMBER);
    EXPECT_TRUE(isBelievedBy(OWNER));
    EXPECT_FALSE(isBelievedBy(STRANGER));
}

TEST_F(RPCTrust, IsNotForAFolderOfAnotherUser)
{
    const std::string folder = runtime.directory.getPath();
    ASSERT_EQ(chown(folder.c_str(), OWNER, STRANGERS_GROUP), 0);
    EXPECT_EQ(problemOfServer(), "the runtime folder " + folder + " belongs to user " + std::to_string(OWNER));
    giveFolder(OWNER);
    EXPECT_EQ(problemOfServer(), "no problem") << "it is for the access group, too";
}

} // namespace

} // namespace Corvane::Test
