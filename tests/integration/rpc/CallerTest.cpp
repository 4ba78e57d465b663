#include "ServerFixture.h"

#include <corvane/common/RPCCaller.h>
#include <corvane/foundation/ValueObjects.h>
#include <grp.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace Corvane::Test
{

namespace
{

constexpr uid_t OTHER_USER = 54321;
constexpr gid_t SHARED_GROUP = 54323;

/// Answers with what it knows of its caller.
class AskingServer : public RPCServer
{
public:
    AskingServer() : RPCServer("ASKING")
    {
        interfaces["IAsking"] = {{"who", static_cast<Handler>(&AskingServer::who)},
                                 {"isMember", static_cast<Handler>(&AskingServer::isMember)},
                                 {"lives", static_cast<Handler>(&AskingServer::lives)}};
        setConnectionLimit(4);
    }
    ~AskingServer() override { RPCServer::shutdown(); }
    using RPCServer::setSubscriptionCheck;

private:
    static std::string answer(const IRPC::RPCSynchronousMethodObject& request, const std::string& text)
    {
        return IRPC::RPCResultObject(request, StringObject(text)).serialize();
    }
    std::string who(const IRPC::RPCSynchronousMethodObject& request)
    {
        const RPCCaller* const caller = RPCCaller::getCurrent();
        return answer(request, caller == nullptr
                                   ? "nobody"
                                   : std::to_string(caller->getPid()) + " " + std::to_string(caller->getUser()));
    }
    std::string isMember(const IRPC::RPCSynchronousMethodObject& request)
    {
        return answer(request, RPCCaller::getCurrent()->isMemberOf(SHARED_GROUP) ? "yes" : "no");
    }
    std::string lives(const IRPC::RPCSynchronousMethodObject& request)
    {
        const FileDescriptor process = RPCCaller::getCurrent()->openProcess();
        pollfd wait{.fd = process.get(), .events = POLLIN, .revents = 0};
        return answer(request, process.isOpen() && poll(&wait, 1, 0) == 0 ? "yes" : "no");
    }
};

std::string callOf(const std::string& method)
{
    return R"({"jsonrpc":"2.0","id":1,"method":"IAsking::)" + method + "\"}";
}

std::string replyOf(const std::string& text)
{
    return R"({"jsonrpc":"2.0","id":1,"result":")" + text + "\"}";
}

class RPCCallerTest : public testing::Test
{
protected:
    void start()
    {
        server.init();
        chmod(runtime.directory.getPath().c_str(), 0755);
        chmod(server.getFixedRPCAddress().c_str(), 0666);
    }
    RawClient connect() { return RawClient(server.getFixedRPCAddress()); }
    std::string call(const std::string& method) { return connect().call(callOf(method)); }

    /// @return the exit status of the work that a child does as another user, who is a member of the access group
    template <class Work>
    int asStranger(Work work)
    {
        const pid_t child = fork();
        if (child == 0) {
            const gid_t group = SHARED_GROUP;
            if (setgroups(1, &group) != 0 || setgid(OTHER_USER) != 0 || setuid(OTHER_USER) != 0)
                _exit(100);
            _exit(work());
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    ScopedEnvironment access{"CORVANE_RPC_GROUP", geteuid() == 0 ? std::to_string(SHARED_GROUP).c_str() : nullptr};
    TemporaryRuntime runtime;
    AskingServer server;
};

using RPCCallerRootTest = RPCCallerTest;

TEST_F(RPCCallerTest, IsTheProcessAndTheUserThatTheSystemNames)
{
    start();
    EXPECT_EQ(call("who"), replyOf(std::to_string(getpid()) + " " + std::to_string(geteuid())));
    EXPECT_EQ(call("lives"), replyOf("yes"));
}

TEST_F(RPCCallerTest, IsNobodyForACallFromWithin)
{
    EXPECT_EQ(server.handleRPCSynchronousMethodPayload(callOf("who")), replyOf("nobody"));
    EXPECT_EQ(RPCCaller::getCurrent(), nullptr);
}

TEST_F(RPCCallerTest, IsTheOneWhoConnectedAlsoForWhoInheritsTheConnection)
{
    start();
    RawClient client = connect();
    const pid_t heir = fork();
    if (heir == 0)
        _exit(client.call(callOf("who")) == replyOf(std::to_string(getppid()) + " " + std::to_string(geteuid())) ? 0
                                                                                                                 : 1);
    int status = 0;
    waitpid(heir, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(RPCCallerTest, HasNoLivingProcessOnceTheOneThatConnectedHasEnded)
{
    start();
    int go[2];
    int reply[2];
    ASSERT_TRUE(pipe(go) == 0 && pipe(reply) == 0);
    const pid_t child = fork();
    if (child == 0) {
        RawClient client = connect();
        if (fork() != 0)
            _exit(0);
        char byte{};
        if (read(go[0], &byte, 1) == 1)
            byte = client.call(callOf("lives")) == replyOf("no") ? 'n' : 'y';
        _exit(write(reply[1], &byte, 1) == 1 ? 0 : 1);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    char byte{};
    ASSERT_EQ(write(go[1], "!", 1), 1);
    ASSERT_EQ(read(reply[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'n');
    for (const int descriptor : {go[0], go[1], reply[0], reply[1]})
        close(descriptor);
}

TEST_F(RPCCallerTest, MayBeRefusedASubscription)
{
    server.setSubscriptionCheck(
        [] { return RPCCaller::getCurrent()->getPid() == getpid() ? std::string("not for you") : std::string(); });
    start();
    EXPECT_EQ(connect().call(R"({"jsonrpc":"2.0","id":1,"method":"rpc.subscribe","params":{"notifications":["*"]}})"),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"not for you"}})");
}

TEST_F(RPCCallerRootTest, IsAMemberOfAllItsGroups)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    start();
    EXPECT_EQ(call("isMember"), replyOf("no"));
    EXPECT_EQ(asStranger([this] { return call("isMember") == replyOf("yes") ? 0 : 1; }), 0);
}

TEST_F(RPCCallerRootTest, HasHalfOfTheConnectionsAtMostUnlessItIsRootOrTheServersOwnUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    start();
    std::vector<RawClient> own;
    own.push_back(connect());
    EXPECT_EQ(own.back().call(callOf("lives")), replyOf("yes"));
    EXPECT_EQ(asStranger([this] {
                  std::vector<RawClient> clients;
                  for (int i = 0; i < 2; ++i) {
                      clients.push_back(connect());
                      if (clients.back().call(callOf("lives")) != replyOf("yes"))
                          return 1;
                  }
                  return connect().call(callOf("lives")).find("too many connections") != std::string::npos ? 0 : 2;
              }),
              0);
    for (int i = 0; i < 3; ++i) {
        own.push_back(connect());
        EXPECT_EQ(own.back().call(callOf("lives")), replyOf("yes")) << i;
    }
}

} // namespace

} // namespace Corvane::Test
