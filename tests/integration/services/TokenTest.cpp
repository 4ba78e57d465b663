#include <corvane/APPRPCServer.h>
#include <corvane/Application.h>
#include <corvane/common/RPCClient.h>
#include <corvane/common/Service.h>
#include <corvane/common/TokenStore.h>
#include <corvane/foundation/Exception.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <nlohmann/json.hpp>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>
#include <vector>

/// Tokens that reach a service over a socket, and those that do not.
namespace Corvane::Test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// A service that remembers what it is told, and fails as the test wants. It is told on the server's thread.
class RecordingService : public Application, public Service
{
public:
    using Application::Application;

    std::string getUid() override { return Application::getUid(); }
    void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) override
    {
        record("create " + std::to_string(token) + " " + attributes.MapBase::serialize());
        if (usesStore)
            store.create(token, attributes);
    }
    void deleteAuthorizationToken(unsigned int token) override { record("delete " + std::to_string(token)); }

    std::vector<std::string> getCalls()
    {
        const std::lock_guard guard(mutex);
        return calls;
    }

    std::function<void()> failure;
    bool usesStore = false;
    TokenStore store;

private:
    void record(const std::string& call)
    {
        const std::lock_guard guard(mutex);
        calls.push_back(call);
        if (failure)
            failure();
    }

    std::mutex mutex;
    std::vector<std::string> calls;
};

class Token : public testing::Test
{
protected:
    void SetUp() override { server.init(); }

    /// @return "done", or the message of the error that came back
    std::string call(const std::string& method, const std::string& parameters)
    {
        try {
            const std::string result = client.call("IService::" + method, parameters, DEADLINE);
            return result == "null" ? "done" : "an unexpected result: " + result;
        } catch (const RPCError& error) {
            EXPECT_EQ(error.getReason(), RPCError::Reason::CALL_FAILED);
            EXPECT_EQ(error.getCode(), -32000);
            return error.what();
        }
    }
    std::string create(const std::string& parameters) { return call("authorizationTokenCreation", parameters); }
    std::string remove(const std::string& parameters) { return call("authorizationTokenDeletion", parameters); }

    /// Announces token 1 with attributes that are written as this text.
    std::string createWith(const std::string& attributes)
    {
        return create(nlohmann::json{{"authAttrInternal", attributes}, {"token", 1}}.dump());
    }

    TemporaryRuntime runtime;
    ScopedEnvironment noParameters{"CORVANE_APP_PARAMETERS", nullptr};
    std::string program = "program";
    std::string uid = "--authorization-token=s";
    std::vector<char*> arguments{program.data(), uid.data(), nullptr};
    RecordingService service{2, arguments.data()};
    APPRPCServer server{static_cast<Service*>(&service)};
    RPCClient client{"APPs"};
};

} // namespace

TEST_F(Token, ReachesTheServiceWithItsAttributes)
{
    EXPECT_EQ(createWith(R"({"volume":{"max":2147483647,"min":-2147483648},"none":{}})"), "done");

    EXPECT_THAT(service.getCalls(),
                ElementsAre(R"(create 1 {"none":{},"volume":{"max":2147483647,"min":-2147483648}})"));
}

TEST_F(Token, WithoutAttributesReachesTheServiceWithAnEmptyMap)
{
    EXPECT_EQ(createWith("{}"), "done");

    EXPECT_THAT(service.getCalls(), ElementsAre("create 1 {}"));
}

TEST_F(Token, MayBeAnyUnsignedNumberOf32Bits)
{
    EXPECT_EQ(create(R"({"authAttrInternal":"{}","token":4294967295})"), "done");
    EXPECT_EQ(create(R"({"authAttrInternal":"{}","token":0})"), "done");
    EXPECT_EQ(remove(R"({"token":4294967295})"), "done");

    EXPECT_THAT(service.getCalls(), ElementsAre("create 4294967295 {}", "create 0 {}", "delete 4294967295"));
}

TEST_F(Token, NeverCreatedIsWithdrawnAllTheSame)
{
    EXPECT_EQ(remove(R"({"token":77})"), "done");

    EXPECT_THAT(service.getCalls(), ElementsAre("delete 77"));
}

TEST_F(Token, HasTheLastAttributesOfOneName)
{
    EXPECT_EQ(createWith(R"({"a":{"x":1,"x":2},"b":{"x":3},"b":{"y":4}})"), "done");
    EXPECT_EQ(create(R"({"authAttrInternal":"{\"no\":{}}","token":1,"token":2,"authAttrInternal":"{}"})"), "done");

    EXPECT_THAT(service.getCalls(), ElementsAre(R"(create 1 {"a":{"x":2},"b":{"y":4}})", "create 2 {}"));
}

TEST_F(Token, IsRefusedForABadAttributeThoughALaterOneOfItsNameIsGood)
{
    EXPECT_EQ(createWith(R"({"a":1,"a":{}})"), "authAttrInternal: a: expected an object, found 1");
    EXPECT_EQ(createWith(R"({"a":{"x":"","x":1}})"),
              "authAttrInternal: a.x: expected a signed 32-bit number, found string");

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, IsRefusedWhenItsAttributesAreNoMapOfMapsOfIntegers)
{
    EXPECT_EQ(createWith(R"({"volume":1})"), "authAttrInternal: volume: expected an object, found 1");
    EXPECT_EQ(createWith(R"({"volume":[]})"), "authAttrInternal: volume: expected an object, found array");
    EXPECT_EQ(createWith(R"({"volume":null})"), "authAttrInternal: volume: expected an object, found null");
    const std::string member = "authAttrInternal: volume.change: expected a signed 32-bit number, found ";
    EXPECT_EQ(createWith(R"({"volume":{"change":"1"}})"), member + "string");
    EXPECT_EQ(createWith(R"({"volume":{"change":{}}})"), member + "object");
    EXPECT_EQ(createWith(R"({"volume":{"change":true}})"), member + "true");
    EXPECT_EQ(createWith(R"({"volume":{"change":1.5}})"), member + "1.5");
    EXPECT_EQ(createWith(R"({"volume":{"change":2147483648}})"), member + "2147483648");
    EXPECT_EQ(createWith("[]"), "authAttrInternal: expected an object, found array");
    EXPECT_EQ(createWith("\"{}\""), "authAttrInternal: expected an object, found string");

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, IsRefusedWhenItsAttributesAreNoJson)
{
    for (const char* text : {"", "volume", "{", "{}{}", "{'volume':{}}", "{\"volume\":{\"change\":1},}"})
        EXPECT_NE(createWith(text), "done") << text;

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, IsRefusedWhenItsAttributesAreAnObjectInsteadOfAText)
{
    EXPECT_EQ(create(R"({"authAttrInternal":{},"token":1})"), "authAttrInternal: expected a string, found object");

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, IsRefusedWhenItIsNoUnsignedNumber)
{
    const std::string problem = "token: expected an unsigned 32-bit number, found ";
    for (const auto& [token, found] : std::vector<std::pair<std::string, std::string>>{
             {"-1", "-1"}, {"4294967296", "4294967296"}, {"1.0", "1.0"}, {"\"1\"", "string"}, {"null", "null"}}) {
        EXPECT_EQ(create(R"({"authAttrInternal":"{}","token":)" + token + "}"), problem + found);
        EXPECT_EQ(remove(R"({"token":)" + token + "}"), problem + found);
    }

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, IsRefusedWithAMissingParameterTheAttributesFirst)
{
    EXPECT_EQ(create("{}"), "authAttrInternal: missing");
    EXPECT_EQ(create(R"({"token":1})"), "authAttrInternal: missing");
    EXPECT_EQ(create(R"({"authAttrInternal":"{}"})"), "token: missing");
    EXPECT_EQ(create(R"({"authAttrInternal":"{\"a\":1}"})"), "authAttrInternal: a: expected an object, found 1");
    EXPECT_EQ(remove("{}"), "token: missing");

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, ThatTheServiceRefusesIsAnErrorWithTheTextOfItsException)
{
    service.failure = [] { throw std::runtime_error("not today"); };
    EXPECT_EQ(createWith("{}"), "not today");
    EXPECT_EQ(remove(R"({"token":1})"), "not today");
    service.failure = [] { throw Exception(RETURN_INVALID_STATE); };
    EXPECT_EQ(createWith("{}"), "Invalid state");
    EXPECT_EQ(remove(R"({"token":1})"), "Invalid state");

    service.failure = {};
    EXPECT_EQ(createWith("{}"), "done");
}

TEST_F(Token, ThatMakesTheServiceThrowSomethingElseIsAnUnknownError)
{
    CapturedOutput error;
    service.failure = [] { throw 5; };
    EXPECT_EQ(createWith("{}"), "unknown");
    EXPECT_EQ(remove(R"({"token":1})"), "unknown");

    service.failure = {};
    EXPECT_EQ(remove(R"({"token":1})"), "done");
    EXPECT_THAT(error.getMessages(), ElementsAre("authorizationTokenCreation(): caught unknown exception",
                                                 "authorizationTokenDeletion(): caught unknown exception"));
}

TEST_F(Token, ThatIsOneTooManyForTheStoreIsRefusedWithItsLimit)
{
    service.usesStore = true;
    nlohmann::json attributes;
    for (std::size_t i = 0; i <= TokenStore::NAME_LIMIT; ++i)
        attributes["n" + std::to_string(i)] = {{"change", 1}};

    EXPECT_EQ(createWith(attributes.dump()), "token 1 has 65 names, at most 64 are kept");
    EXPECT_EQ(service.store.getCount(), 0U);

    attributes.erase("n0");
    EXPECT_EQ(createWith(attributes.dump()), "done");
    EXPECT_EQ(service.store.find(1, "n64", "change"), 1);
}

TEST_F(Token, ForAServiceThatIsGoneIsAnInvalidProxy)
{
    for (const std::string& state : {ILifecycleManagement::STATE_ABORTED, ILifecycleManagement::STATE_RUNAWAY,
                                     ILifecycleManagement::STATE_TERMINATED}) {
        service.setState(state);
        EXPECT_EQ(createWith("{}"), "invalid proxy");
        EXPECT_EQ(remove(R"({"token":1})"), "invalid proxy");
    }

    EXPECT_THAT(service.getCalls(), IsEmpty());
}

TEST_F(Token, ForAServiceThatIsGoneHasABadParameterReportedFirst)
{
    service.setState(ILifecycleManagement::STATE_TERMINATED);

    EXPECT_EQ(create(R"({"token":1})"), "authAttrInternal: missing");
    EXPECT_EQ(createWith(R"({"volume":1})"), "authAttrInternal: volume: expected an object, found 1");
    EXPECT_EQ(create(R"({"authAttrInternal":"{}","token":-1})"), "token: expected an unsigned 32-bit number, found -1");
    EXPECT_EQ(remove("{}"), "token: missing");
}

} // namespace Corvane::Test
