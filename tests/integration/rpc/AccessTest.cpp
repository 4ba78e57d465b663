#include "ServerFixture.h"

#include <functional>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>

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

} // namespace

} // namespace Corvane::Test
