#include "PlainWindow.h"

#include <corvane/APPRPCServer.h>
#include <corvane/common/RPCClient.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <support/Await.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

/// A server that is up although its window has never been initialised.
class EarlyCall : public testing::Test
{
protected:
    void SetUp() override { server.init(); }

    /// Calls every method that the server has, with parameters that suit all of them.
    /// @return the errors that came back, by method
    std::map<std::string, std::string> callEverything()
    {
        constexpr char PARAMETERS[] =
            R"({"requestedState":"SUSPENDING","obtained":true,"visibility":true,"opacity":1,"zorder":1,)"
            R"("location":{"x":0,"y":0,"width":1,"height":1},"event":{"type":"KeyEvent","keyCode":1,"pressed":true}})";
        std::map<std::string, std::string> errors;
        const nlohmann::json document = nlohmann::json::parse(client.call("rpc.discover"));
        for (const nlohmann::json& method : document["methods"]) {
            try {
                client.call(method["name"], PARAMETERS, DEADLINE);
            } catch (const RPCError& error) {
                errors[method["name"]] = error.what();
            }
        }
        return errors;
    }

    TemporaryRuntime runtime;
    std::string program = "early";
    std::string type = "--application-type=test";
    std::vector<char*> arguments{program.data(), type.data(), nullptr};
    PlainWindow window{2, arguments.data()};
    APPRPCServer server{&window};
    RPCClient client{"APP" + window.getUid()};
};

TEST_F(EarlyCall, IsAnsweredAsAnyOther)
{
    EXPECT_TRUE(callEverything().empty());
    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_TERMINATING);
}

TEST_F(EarlyCall, OnceATerminatedStateIsReachedIsAnInvalidProxy)
{
    for (const std::string& state : {ILifecycleManagement::STATE_ABORTED, ILifecycleManagement::STATE_RUNAWAY,
                                     ILifecycleManagement::STATE_TERMINATED}) {
        window.setState(state);
        const auto errors = callEverything();
        EXPECT_EQ(errors.size(), 17U) << "all but the four stacking methods";
        for (const auto& [method, error] : errors)
            EXPECT_EQ(error, "invalid proxy") << method;
    }
}

} // namespace

} // namespace Corvane::Test
