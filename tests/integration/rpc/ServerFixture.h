#pragma once

#include "RawClient.h"
#include "TestServer.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

/// A server that is up in a runtime folder of its own.
class ServerFixture : public testing::Test
{
protected:
    void SetUp() override { server.init(); }
    RawClient connect() { return RawClient(server.getFixedRPCAddress()); }

    TemporaryRuntime runtime;
    TestServer server;
};

} // namespace Corvane::Test
