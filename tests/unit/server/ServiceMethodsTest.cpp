#include "ServerFakes.h"

/// The methods of IService.
namespace Corvane::Test
{

class ServiceMethods : public ServerTest
{
protected:
    std::string create(const std::string& parameters)
    {
        return callText(serviceServer, "IService", "authorizationTokenCreation", parameters);
    }
    std::string remove(const std::string& parameters)
    {
        return callText(serviceServer, "IService", "authorizationTokenDeletion", parameters);
    }
};

TEST_F(ServiceMethods, PassATokenOnWithItsAttributes)
{
    EXPECT_EQ(create(R"({"authAttrInternal":"{\"volume\":{\"max\":50,\"min\":-1},\"none\":{}}","token":4294967295})"),
              resultText("null"));

    EXPECT_EQ(journal.read(), (Journal::Entries{R"(create 4294967295 {"none":{},"volume":{"max":50,"min":-1}})"}));
}

TEST_F(ServiceMethods, PassNoAttributesForAnEmptyObject)
{
    EXPECT_EQ(create(R"({"authAttrInternal":"{}","token":1})"), resultText("null"));

    EXPECT_EQ(journal.read(), (Journal::Entries{"create 1 {}"}));
}

TEST_F(ServiceMethods, PassTheDeletionOfAnUnknownTokenOn)
{
    EXPECT_EQ(remove(R"({"token":77})"), resultText("null"));

    EXPECT_EQ(journal.read(), (Journal::Entries{"delete 77"}));
}

TEST_F(ServiceMethods, RefuseBadParametersWithoutCallingTheService)
{
    for (const char* parameters :
         {R"({"token":1})", R"({"authAttrInternal":{},"token":1})", R"({"authAttrInternal":"","token":1})",
          R"({"authAttrInternal":"[]","token":1})", R"({"authAttrInternal":"{\"a\":1}","token":1})",
          R"({"authAttrInternal":"{\"a\":{\"b\":\"c\"}}","token":1})", R"({"authAttrInternal":"{}"})",
          R"({"authAttrInternal":"{}","token":-1})", R"({"authAttrInternal":"{}","token":"1"})"})
        EXPECT_TRUE(Json::parse(create(parameters)).contains("error")) << parameters;
    for (const char* parameters : {"{}", R"({"token":-1})", R"({"token":null})"})
        EXPECT_TRUE(Json::parse(remove(parameters)).contains("error")) << parameters;

    EXPECT_TRUE(journal.read().empty());
}

TEST_F(ServiceMethods, ReportTheAttributesBeforeTheToken)
{
    const Json reply = Json::parse(create("{}"));

    EXPECT_NE(reply["error"]["message"].get<std::string>().find("authAttrInternal"), std::string::npos) << reply;
}

TEST_F(ServiceMethods, NameTheParameterThatHoldsBadAttributes)
{
    const auto messageFor = [this](const std::string& attributes) {
        const Json parameters = {{"authAttrInternal", attributes}, {"token", 1}};
        return Json::parse(create(parameters.dump()))["error"]["message"].get<std::string>();
    };
    EXPECT_EQ(messageFor("[]"), "authAttrInternal: expected an object, found array");
    EXPECT_EQ(messageFor("{"), "authAttrInternal: not valid JSON");
    EXPECT_EQ(messageFor(R"({"volume":1})"), "authAttrInternal: volume: expected an object, found 1");
    EXPECT_EQ(messageFor(R"({"volume":{"max":"50"}})"),
              "authAttrInternal: volume.max: expected a signed 32-bit number, found string");
}

} // namespace Corvane::Test
