#include "VolumeProcess.h"

#include <csignal>
#include <gmock/gmock.h>
#include <support/CapturedOutput.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

class VolumeExample : public WithVolumeService
{
protected:
    static Outcome client(const Words& words)
    {
        Words command{VOLUME_CLIENT};
        command.insert(command.end(), words.begin(), words.end());
        ChildProcess process(command);
        const ProcessEnd end = process.wait();
        return {end.status.value_or(-1), process.getOutput(), process.getError()};
    }
    static std::string volume() { return corvanectl({"call", "VOLUMEvolume", "IVolume::getVolume"}).output; }
    void grant(const std::string& token, const std::string& attributes = R"({"volume":{"change":1}})")
    {
        ASSERT_EQ(corvanectl({"token", "create", "volume", token, write(attributes)}).status, 0);
    }
};

} // namespace

TEST_F(VolumeExample, RefusesATokenThatNobodyAnnounced)
{
    const Outcome outcome = client({"--token=42", "30"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "volume-client: token 42 does not permit to change the volume\n");
    EXPECT_EQ(volume(), "50\n");
}

TEST_F(VolumeExample, LetsAClientWithAnAnnouncedTokenChangeTheVolumeUntilItIsWithdrawn)
{
    grant("42");
    const Outcome outcome = client({"--token=42", "30"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "volume 30\n");
    EXPECT_EQ(volume(), "30\n");

    corvanectl({"token", "delete", "volume", "42"});
    EXPECT_EQ(client({"--token=42", "70"}).status, 1);
    EXPECT_EQ(volume(), "30\n");
}

TEST_F(VolumeExample, RefusesATokenWhoseAttributesDoNotPermitTheChange)
{
    for (const char* attributes : {"{}", R"({"volume":{}})", R"({"volume":{"change":0}})",
                                   R"({"channel":{"change":1}})", R"({"volume":{"hear":1}})"}) {
        grant("42", attributes);
        EXPECT_EQ(client({"--token=42", "30"}).status, 1) << attributes;
    }

    EXPECT_EQ(volume(), "50\n");
}

TEST_F(VolumeExample, LetsAClientAnnounceATokenOfItsOwnWhichIsWithdrawnAfterwards)
{
    const Outcome outcome = client({"80"});

    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "volume 80\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(service.getOutput(), "tokens 1\nvolume 80\ntokens 0\n");
}

TEST_F(VolumeExample, RefusesALevelAboveAHundredAndParametersOfAnotherKind)
{
    grant("42");

    EXPECT_EQ(client({"--token=42", "100"}).output, "volume 100\n");
    EXPECT_EQ(client({"--token=42", "101"}).error, "volume-client: level: expected at most 100\n");
    EXPECT_EQ(corvanectl({"call", "VOLUMEvolume", "IVolume::setVolume", "token=42", "level=loud"}).error,
              "corvanectl: level: expected an unsigned 32-bit number, found string\n");
    EXPECT_EQ(corvanectl({"call", "VOLUMEvolume", "IVolume::setVolume", "level=1"}).error,
              "corvanectl: token: missing\n");
    EXPECT_EQ(volume(), "100\n");
}

TEST_F(VolumeExample, HasAControlServerLikeAnyService)
{
    EXPECT_THAT(corvanectl({"list"}).output, HasSubstr("volume        APPvolume     RUNNING\n"));

    EXPECT_EQ(corvanectl({"terminate", "volume"}).status, 0);

    EXPECT_EQ(service.wait().status, 0) << service.getError();
    EXPECT_EQ(parseDebugLines(service.getError()).size(), 1U) << "but for the missing process manager's line";
    EXPECT_EQ(corvanectl({"list"}).output, "UID  SERVER  STATE\n");
}

TEST_F(VolumeExample, SaysWhyTheServiceDoesNotStart)
{
    ChildProcess second({VOLUME_SERVICE, "--authorization-token=volume"});

    EXPECT_EQ(second.wait().status, 1);
    EXPECT_THAT(second.getError(), HasSubstr("volume-service: "));
    EXPECT_EQ(volume(), "50\n") << "the first one goes on";
}

TEST_F(VolumeExample, ClientSaysWhatIsWrongWithItsWords)
{
    for (const Words& words : {Words{}, Words{"loud"}, Words{"1", "2"}, Words{"--token=", "1"},
                               Words{"--token=-1", "1"}, Words{"4294967296"}}) {
        const Outcome outcome = client(words);
        EXPECT_EQ(outcome.status, 1) << testing::PrintToString(words);
        EXPECT_THAT(outcome.error, StartsWith("volume-client: ")) << testing::PrintToString(words);
    }

    EXPECT_EQ(volume(), "50\n");
}

TEST_F(VolumeExample, ClientSaysThatThereIsNoService)
{
    EXPECT_THAT(client({"--service=radio", "1"}).error, StartsWith("volume-client: no server APPradio"));
    EXPECT_THAT(client({"--service=radio", "--token=42", "1"}).error,
                StartsWith("volume-client: no server VOLUMEradio"));
}
