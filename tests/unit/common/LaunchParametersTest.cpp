#include <corvane/interfaces/IWindowManager.h>

#include <corvane/foundation/Exception.h>
#include <corvane/foundation/SerialError.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <support/CapturedOutput.h>
#include <vector>

namespace Corvane::Test
{
namespace
{

using ApplicationParameters = IApplicationManager::LaunchParameters;
using WindowParameters = IWindowManager::LaunchParameters;
using testing::ElementsAre;

template <class Parameters>
Parameters fromText(const std::string& text)
{
    Deserializer deserializer(text);
    return Parameters(deserializer);
}

template <class Parameters>
Parameters fromCommandLine(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "/usr/bin/program");
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    return {static_cast<int>(arguments.size()), argv.data()};
}

void expectLocation(const ISurfaceCompositing::Rect& location, int x, int y, unsigned int width, unsigned int height)
{
    EXPECT_EQ(location.getX(), x);
    EXPECT_EQ(location.getY(), y);
    EXPECT_EQ(location.getWidth(), width);
    EXPECT_EQ(location.getHeight(), height);
}

const char* const FULL_TEXT =
    "{\"applicationType\":\"tv\",\"applicationParameters\":\"no-cursor fast\",\"authorizationToken\":\"4711\","
    "\"compositingParameters\":{\"sessionIndex\":2,\"location\":{\"x\":-10,\"y\":20,\"width\":640,\"height\":480},"
    "\"zOrder\":3,\"opacity\":128,\"visibility\":false}}";

TEST(LaunchParameters, OfAnApplicationAreReadFromTheirSerialForm)
{
    const auto parameters = fromText<ApplicationParameters>(FULL_TEXT);

    EXPECT_EQ(parameters.getApplicationType(), "tv");
    EXPECT_EQ(parameters.getApplicationParameters(), "no-cursor fast");
    EXPECT_EQ(parameters.getAuthorizationToken(), "4711");
}

TEST(LaunchParameters, OfAWindowAreReadFromTheirSerialForm)
{
    const auto parameters = fromText<WindowParameters>(FULL_TEXT);

    EXPECT_EQ(parameters.getApplicationType(), "tv");
    EXPECT_EQ(parameters.getAuthorizationToken(), "4711");
    const auto& compositing = parameters.getCompositingParameters();
    EXPECT_EQ(compositing.getSessionIndex(), 2u);
    expectLocation(compositing.getLocation(), -10, 20, 640, 480);
    EXPECT_EQ(compositing.getZOrder(), 3u);
    EXPECT_EQ(compositing.getOpacity(), 128u);
    EXPECT_FALSE(compositing.getVisibility());
}

void expectDefaults(const WindowParameters& parameters)
{
    EXPECT_EQ(parameters.getApplicationType(), "");
    EXPECT_EQ(parameters.getApplicationParameters(), "");
    EXPECT_EQ(parameters.getAuthorizationToken(), "");
    const auto& compositing = parameters.getCompositingParameters();
    EXPECT_EQ(compositing.getSessionIndex(), 0u);
    expectLocation(compositing.getLocation(), 0, 0, 1280, 720);
    EXPECT_EQ(compositing.getZOrder(), 0u);
    EXPECT_EQ(compositing.getOpacity(), 255u);
    EXPECT_TRUE(compositing.getVisibility());
}

TEST(LaunchParameters, AreAllOptional)
{
    expectDefaults(fromText<WindowParameters>("{}"));
    expectDefaults(fromText<WindowParameters>("{\"compositingParameters\":{}}"));
    expectDefaults(fromText<WindowParameters>("{\"somethingElse\":[1,2]}"));
    expectDefaults(fromCommandLine<WindowParameters>({}));
    expectDefaults(WindowParameters());
}

TEST(LaunchParameters, AreWrittenAsTheyAreRead)
{
    EXPECT_EQ(fromText<WindowParameters>(FULL_TEXT).serialize(), FULL_TEXT);
    EXPECT_EQ(fromText<WindowParameters>(FULL_TEXT).clone()->serialize(), FULL_TEXT);
    EXPECT_EQ(fromText<ApplicationParameters>(FULL_TEXT).clone()->serialize(),
              "{\"applicationType\":\"tv\",\"applicationParameters\":\"no-cursor fast\",\"authorizationToken\":"
              "\"4711\"}");
}

TEST(LaunchParameters, HaveATypeName)
{
    EXPECT_EQ(ApplicationParameters().getObjectType(), "IApplicationManager::LaunchParameters");
    EXPECT_EQ(WindowParameters().getObjectType(), "IWindowManager::LaunchParameters");
}

TEST(LaunchParameters, OfAWrongTypeAreRefused)
{
    for (const char* text :
         {"", "3", "[]", "\"tv\"", "{\"applicationType\":1}", "{\"authorizationToken\":null}",
          "{\"compositingParameters\":\"none\"}", "{\"compositingParameters\":{\"opacity\":-1}}",
          "{\"compositingParameters\":{\"location\":{\"x\":1}}}", "{\"compositingParameters\":{\"visibility\":1}}"})
        EXPECT_THROW(fromText<WindowParameters>(text), SerialError) << text;
}

TEST(LaunchParameters, AreReadFromTheCommandLine)
{
    const auto parameters = fromCommandLine<WindowParameters>(
        {"--application-type=tv", "--application-parameters=no-cursor fast", "--authorization-token=4711",
         "--session-index=2", "--location=-10,20,640,480", "--z-order=3", "--opacity=128", "--visibility=false"});

    EXPECT_EQ(parameters.serialize(), FULL_TEXT);
}

TEST(LaunchParameters, ReachTheEndsOfTheirRanges)
{
    const auto parameters =
        fromCommandLine<WindowParameters>({"--session-index=4294967295", "--z-order=4294967295", "--opacity=0",
                                           "--location=-2147483648,2147483647,0,4294967295", "--visibility=true"});

    const auto& compositing = parameters.getCompositingParameters();
    EXPECT_EQ(compositing.getSessionIndex(), 4294967295u);
    EXPECT_EQ(compositing.getZOrder(), 4294967295u);
    EXPECT_EQ(compositing.getOpacity(), 0u);
    expectLocation(compositing.getLocation(), -2147483647 - 1, 2147483647, 0, 4294967295u);
    EXPECT_TRUE(compositing.getVisibility());
}

TEST(LaunchParameters, LeaveOtherArgumentsToTheApplication)
{
    const auto parameters = fromCommandLine<WindowParameters>(
        {"file", "-v", "--opacity", "128", "--opacity-of-menu=3", "--application-type",
         "--authorization-token=", "--unknown=7", "-opacity=bad", "opacity=bad", ""});

    expectDefaults(parameters);
}

TEST(LaunchParameters, EndAtTwoDashes)
{
    const auto parameters = fromCommandLine<WindowParameters>({"--z-order=1", "--", "--z-order=2", "--opacity=bad"});

    EXPECT_EQ(parameters.getCompositingParameters().getZOrder(), 1u);
}

TEST(LaunchParameters, TakeTheLastOfARepeatedOption)
{
    const auto parameters = fromCommandLine<WindowParameters>(
        {"--application-type=tv", "--opacity=1", "--application-type=radio=a=b", "--opacity=2"});

    EXPECT_EQ(parameters.getApplicationType(), "radio=a=b");
    EXPECT_EQ(parameters.getCompositingParameters().getOpacity(), 2u);
}

TEST(LaunchParameters, DoNotReadTheProgramsName)
{
    char name[] = "--application-type=tv";
    char* argv[] = {name, nullptr};

    EXPECT_EQ(ApplicationParameters(1, argv).getApplicationType(), "");
}

struct BadOption {
    const char* argument;
    const char* message;
};

void PrintTo(const BadOption& option, std::ostream* stream)
{
    *stream << option.argument;
}

class BadLaunchParameter : public testing::TestWithParam<BadOption>
{
};

TEST_P(BadLaunchParameter, IsRefusedWithCodeOneAndALineThatNamesTheOption)
{
    CapturedOutput error;
    try {
        fromCommandLine<WindowParameters>({GetParam().argument});
        ADD_FAILURE() << "no exception";
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.getCode(), RETURN_INVALID_PARAMETER);
    }
    EXPECT_THAT(error.getMessages(), ElementsAre(GetParam().message));
    EXPECT_EQ(error.getDebugLines().at(0).level, 'E');
    EXPECT_NO_THROW(fromCommandLine<ApplicationParameters>({GetParam().argument})) << "no option of an application";
}

#define CORVANE_NUMBER "expected a number from 0 to 4294967295, found "
#define CORVANE_LOCATION "--location: expected X,Y,W,H in pixels, found "

INSTANTIATE_TEST_SUITE_P(
    AllOptions, BadLaunchParameter,
    testing::Values(BadOption{"--session-index=", "--session-index: " CORVANE_NUMBER "\"\""},
                    BadOption{"--session-index=-1", "--session-index: " CORVANE_NUMBER "\"-1\""},
                    BadOption{"--session-index=4294967296", "--session-index: " CORVANE_NUMBER "\"4294967296\""},
                    BadOption{"--z-order=1.5", "--z-order: " CORVANE_NUMBER "\"1.5\""},
                    BadOption{"--z-order= 1", "--z-order: " CORVANE_NUMBER "\" 1\""},
                    BadOption{"--opacity=256", "--opacity: expected a number from 0 to 255, found \"256\""},
                    BadOption{"--opacity=0x10", "--opacity: expected a number from 0 to 255, found \"0x10\""},
                    BadOption{"--visibility=1", "--visibility: expected true or false, found \"1\""},
                    BadOption{"--visibility=True", "--visibility: expected true or false, found \"True\""},
                    BadOption{"--location=1,2,3", CORVANE_LOCATION "\"1,2,3\""},
                    BadOption{"--location=1,2,3,4,", CORVANE_LOCATION "\"1,2,3,4,\""},
                    BadOption{"--location=1,2,-3,4", CORVANE_LOCATION "\"1,2,-3,4\""},
                    BadOption{"--location=1;2;3;4", CORVANE_LOCATION "\"1;2;3;4\""},
                    BadOption{"--location=2147483648,0,1,1", CORVANE_LOCATION "\"2147483648,0,1,1\""}));

} // namespace
} // namespace Corvane::Test
