#include "../application/Announcements.h"
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <support/CapturedOutput.h>
#include <support/ChildProcess.h>
#include <support/MissingManager.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

/// A service that runs in a process of its own, by means of ApplicationExec.
class ServiceProcess : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(process.awaitOutput("running")) << process.getError(); }

    static std::string changeOf(const std::string& oldState, const std::string& newState)
    {
        return R"(IApplication::onStateChange {"uid":"volume","oldState":")" + oldState + R"(","newState":")" +
               newState + R"("})";
    }

    TemporaryRuntime runtime;
    ChildProcess process{{DRIVEN_SERVICE, "--authorization-token=volume"}, leavingSignalsToTheProgram()};
    RPCClient client{"APPvolume"};
};

TEST_F(ServiceProcess, GetsTokensAndTheirWithdrawal)
{
    EXPECT_EQ(client.call("IService::authorizationTokenCreation",
                          R"({"authAttrInternal":"{\"volume\":{\"change\":1}}","token":4294967295})"),
              "null");
    EXPECT_EQ(client.call("IService::authorizationTokenDeletion", R"({"token":77})"), "null");

    EXPECT_EQ(process.getOutput(), "running\ncreate 4294967295 {\"volume\":{\"change\":1}}\ndelete 77\n");
}

TEST_F(ServiceProcess, HasTheInterfacesOfAServiceAndNoOthers)
{
    std::vector<std::string> names;
    const json document = json::parse(client.call("rpc.discover"));
    for (const json& method : document["methods"])
        names.push_back(method["name"]);

    EXPECT_THAT(names, testing::UnorderedElementsAre(
                           "IApplication::getState", "IApplication::setState", "IApplication::activate",
                           "IApplication::suspend", "IApplication::terminate", "IApplication::getRuntimeStatistics",
                           "IService::authorizationTokenCreation", "IService::authorizationTokenDeletion"));
    EXPECT_THROW(client.call("IWindow::handleFocus", R"({"obtained":true})"), RPCError);
}

TEST_F(ServiceProcess, TellsAndChangesItsStateAndProvesThatItIsAlive)
{
    Announcements announcements(client);
    EXPECT_EQ(client.call("IApplication::getState"), "\"RUNNING\"");
    EXPECT_EQ(client.call("IApplication::suspend"), "null");

    EXPECT_EQ(announcements.next(), changeOf("RUNNING", "SUSPENDING"));
    const std::string alive = R"(IApplication::onKeepAlive {"uid":"volume","state":"SUSPENDING"})";
    std::string announcement;
    while (announcement != alive)
        ASSERT_TRUE(announcements.box.take(announcement)) << "no keep-alive came";
}

TEST_F(ServiceProcess, TerminatesOnRequestAndEndsCleanly)
{
    Announcements announcements(client);

    EXPECT_EQ(client.call("IApplication::terminate"), "null");

    EXPECT_THAT(announcements.untilGone(),
                ElementsAre(changeOf("RUNNING", "TERMINATING"), changeOf("TERMINATING", "TERMINATED")));
    EXPECT_EQ(process.wait().status, 0) << process.getError();
    EXPECT_EQ(parseDebugLines(process.getError()).size(), 1U) << "but for the missing process manager's line";
    EXPECT_THAT(RPCClient::listServers(), IsEmpty());
}

TEST_F(ServiceProcess, SaysThatItWasAbortedBeforeItDiesOfASignal)
{
    Announcements announcements(client);

    process.sendSignal(SIGTERM);

    EXPECT_THAT(announcements.untilGone(), ElementsAre(changeOf("RUNNING", "ABORTED")));
    EXPECT_EQ(process.wait().signal, SIGTERM);
}

TEST(PlainApplicationProcess, HasNoControlServerAndEndsByItself)
{
    TemporaryRuntime runtime;
    ChildProcess process({DRIVEN_SERVICE, "--plain", "--authorization-token=plain"});

    EXPECT_EQ(process.wait().status, 0) << process.getError();
    EXPECT_EQ(process.getOutput(), "0 servers\n");
    EXPECT_EQ(withoutMissingManager(process.getError()), "");
}

} // namespace

} // namespace Corvane::Test
