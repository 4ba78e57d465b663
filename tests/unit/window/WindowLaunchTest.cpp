#include "WindowFakes.h"

#include <corvane/foundation/Exception.h>
#include <corvane/foundation/SerialError.h>
#include <support/CapturedOutput.h>

/// How a window learns what it starts with.
namespace Corvane::Test
{

namespace
{

/// @return the code that finding the launch parameters throws, 0 when it throws none
ReturnCode codeOf(const std::function<void()>& call)
{
    try {
        call();
        return RETURN_SUCCESS;
    } catch (const Exception& e) {
        return e.getCode();
    }
}

} // namespace

class WindowLaunch : public WindowTest
{
};

TEST_F(WindowLaunch, TakesItsPropertiesFromTheCommandLine)
{
    TestWindow window({"program", "--application-type=player", "--authorization-token=u1", "--session-index=2",
                       "--location=100,50,640,480", "--z-order=3", "--opacity=200", "--visibility=false"});

    EXPECT_EQ(window.getUid(), "u1");
    EXPECT_EQ(text(window.getLocation()), text(Rect(100, 50, 640, 480)));
    EXPECT_EQ(window.getZOrder(), 3U);
    EXPECT_EQ(window.getOpacity(), 200U);
    EXPECT_FALSE(window.getVisibility());
    EXPECT_FALSE(window.isFocused());
    EXPECT_EQ(window.getLaunchParameters().getCompositingParameters().getSessionIndex(), 2U);
}

TEST_F(WindowLaunch, TakesTheEnvironmentAndThenIgnoresTheCommandLine)
{
    ScopedEnvironment parameters("CORVANE_APP_PARAMETERS",
                                 R"({"applicationType":"tv","authorizationToken":"e1","compositingParameters":)"
                                 R"({"zOrder":9,"opacity":7,"visibility":false}})");

    TestWindow window({"program", "--application-type=player", "--authorization-token=u1", "--z-order=3"});

    EXPECT_EQ(window.getUid(), "e1");
    EXPECT_EQ(window.getLaunchParameters().getApplicationType(), "tv");
    EXPECT_EQ(window.getZOrder(), 9U);
    EXPECT_EQ(window.getOpacity(), 7U);
    EXPECT_FALSE(window.getVisibility());
}

TEST_F(WindowLaunch, NeedsNoApplicationTypeInTheEnvironment)
{
    ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", "{}");

    TestWindow window({"program"});

    EXPECT_EQ(window.getLaunchParameters().getApplicationType(), "");
}

TEST_F(WindowLaunch, FailsWhenTheEnvironmentHoldsNoLaunchParameters)
{
    ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", "");

    EXPECT_THROW(TestWindow({"program", "--application-type=player"}), SerialError);
}

TEST_F(WindowLaunch, KeepsTheLowEightBitsOfTheOpacityInTheEnvironment)
{
    ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", R"({"compositingParameters":{"opacity":300}})");

    TestWindow window({"program"});

    EXPECT_EQ(window.getOpacity(), 44U);
}

TEST_F(WindowLaunch, FailsWithoutArgumentsAlsoWhenTheEnvironmentHoldsParameters)
{
    ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", R"({"applicationType":"tv"})");
    Arguments arguments{"program"};

    EXPECT_EQ(codeOf([&] { TestWindow::findLaunchParameters(0, arguments.values()); }), RETURN_INVALID_PARAMETER);
    EXPECT_EQ(codeOf([&] { TestWindow::findLaunchParameters(1, nullptr); }), RETURN_INVALID_PARAMETER);
    EXPECT_EQ(codeOf([&] { TestWindow({}); }), RETURN_INVALID_PARAMETER);
}

TEST_F(WindowLaunch, ReportsMissingArgumentsInOneLine)
{
    CapturedOutput error;
    codeOf([] { TestWindow::findLaunchParameters(0, nullptr); });

    const std::vector<DebugLine> lines = error.getDebugLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].message, "findLaunchParameters(): throwing exception: Invalid parameter");
    EXPECT_EQ(lines[0].level, 'E');
    EXPECT_EQ(lines[0].module, "Window");
}

TEST_F(WindowLaunch, ReportsAMissingApplicationTypeAndThenTheException)
{
    CapturedOutput error;
    const ReturnCode code = codeOf([] { TestWindow({"/usr/bin/player"}); });

    EXPECT_EQ(code, RETURN_INVALID_PARAMETER);
    EXPECT_EQ(error.getMessages(),
              (std::vector<std::string>{"/usr/bin/player is missing launchParameters",
                                        "findLaunchParameters(): throwing exception: Invalid parameter"}));
    codeOf([] { TestWindow::findLaunchParameters(0, nullptr); });
    const std::vector<DebugLine> lines = error.getDebugLines();
    EXPECT_NE(lines[1].line, lines[2].line) << "the line is the one that found the problem";
    for (const DebugLine& line : lines) {
        EXPECT_EQ(line.level, 'E');
        EXPECT_EQ(line.module, "Window");
    }
}

TEST_F(WindowLaunch, TakesOneReferenceOnTheSharedDriverAndNeverGivesItBack)
{
    const unsigned int before = RecordingDriver::getReferences();
    {
        TestWindow window({"program", "--application-type=player"});
        EXPECT_EQ(window.getInputDriver(), driver);
        EXPECT_EQ(RecordingDriver::getReferences(), before + 1);
    }
    EXPECT_EQ(RecordingDriver::getReferences(), before + 1);
}

TEST_F(WindowLaunch, TakesNoReferenceOnTheDriverWhenItFails)
{
    const unsigned int before = RecordingDriver::getReferences();

    codeOf([] { TestWindow({"program"}); });

    EXPECT_EQ(RecordingDriver::getReferences(), before);
}

TEST_F(WindowLaunch, SetsTheDefaultPriorityWhenItIsInitialised)
{
    TestWindow window({"program", "--application-type=player"});
    priority.value = 11;

    window.init();

    EXPECT_EQ(window.getState(), ILifecycleManagement::STATE_LOADING);
    EXPECT_EQ(priority.value, Window::DEFAULT_PRIORITY);
    EXPECT_EQ(Window::DEFAULT_PRIORITY, 0);
    EXPECT_EQ(Window::FOCUSED_PRIORITY, 5);
}

TEST_F(WindowLaunch, IsInitialisedAsAnApplicationBeforeItsPriorityIsSet)
{
    RecordingWindowListener listener("a"); // outlives the window, which announces its end
    TestWindow window({"program", "--application-type=player", "--authorization-token=u1"});
    window.addListener(&listener);

    window.init();

    EXPECT_EQ(journal.read(), (Journal::Entries{"a.onStateChange(u1, UNINITIALIZED, LOADING)", "setpriority(0)"}));
}

} // namespace Corvane::Test
