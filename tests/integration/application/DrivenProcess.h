#pragma once

#include "Announcements.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <vector>

namespace Corvane::Test
{

/// A window application that runs in a process of its own, and a client of its control server.
class DrivenProcess : public testing::Test
{
protected:
    // Longer than the texts that a std::string keeps in itself, as real tokens are.
    static constexpr char UID[] = "token-0123456789abcdef";

    void SetUp() override { ASSERT_TRUE(process.awaitOutput("running")) << process.getError(); }

    nlohmann::json call(const std::string& method, const std::string& parameters = "{}")
    {
        return nlohmann::json::parse(client.call(method, parameters, DEADLINE));
    }
    /// @return the message of the error that the call must end with
    std::string errorOf(const std::string& method, const std::string& parameters = "{}")
    {
        try {
            return "no error but " + client.call(method, parameters, DEADLINE);
        } catch (const RPCError& error) {
            return error.what();
        }
    }

    static std::string changeOf(const std::string& oldState, const std::string& newState)
    {
        return std::string("IApplication::onStateChange {\"uid\":\"") + UID + "\",\"oldState\":\"" + oldState +
               "\",\"newState\":\"" + newState + "\"}";
    }

    TemporaryRuntime runtime;
    ChildProcess process{{DRIVEN_WINDOW, "--application-type=test", std::string("--authorization-token=") + UID,
                          "--location=1,2,30,40", "--z-order=3", "--opacity=200"},
                         leavingSignalsToTheProgram()};
    RPCClient client{std::string("APP") + UID};
};

} // namespace Corvane::Test
