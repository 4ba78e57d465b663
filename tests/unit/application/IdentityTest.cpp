#include "ApplicationFixture.h"
#include "FakeSystem.h"

#include <corvane/common/PlatformHelper.h>
#include <corvane/foundation/Exception.h>
#include <corvane/foundation/SerialError.h>
#include <gmock/gmock.h>
#include <memory>
#include <support/CapturedOutput.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;

class Identity : public ApplicationTest
{
};

TEST_F(Identity, IsTheAuthorizationToken)
{
    TestApplication application({"/usr/bin/QAX", "--authorization-token=4711"});
    EXPECT_EQ(application.getUid(), "4711");
}

TEST_F(Identity, IsTheProcessIdWithoutAToken)
{
    TestApplication application;
    TestApplication another({"/usr/bin/QAX", "--authorization-token="});

    EXPECT_EQ(application.getUid(), std::to_string(getpid()));
    EXPECT_EQ(another.getUid(), application.getUid());
}

TEST_F(Identity, DiffersFromProcessToProcess)
{
    TestApplication application;
    const std::string parent = application.getUid();
    const pid_t child = fork();
    if (child == 0)
        _exit(application.getUid() == std::to_string(getpid()) && application.getUid() != parent ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);

    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Identity, ComesFromTheEnvironmentAndTheCommandLineIsThenIgnored)
{
    const ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", "{\"authorizationToken\":\"environment\"}");
    TestApplication application({"/usr/bin/QAX", "--authorization-token=command line"});
    EXPECT_EQ(application.getUid(), "environment");
}

TEST_F(Identity, OfTheCommandLineIsIgnoredEvenWhenTheEnvironmentNamesNone)
{
    const ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", "{}");
    TestApplication application({"/usr/bin/QAX", "--authorization-token=command line"});
    EXPECT_EQ(application.getUid(), std::to_string(getpid()));
}

TEST_F(Identity, CannotBeFoundInAnEnvironmentThatHoldsNoParameters)
{
    for (const char* text : {"", "{", "[]", "{\"authorizationToken\":4711}"}) {
        const ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", text);
        EXPECT_THROW(TestApplication(), SerialError) << text;
    }
}

TEST_F(Identity, GoesOutWithEveryNotification)
{
    TestApplication application({"/usr/bin/QAX", "--authorization-token=a token longer than any short text"});
    RecordingListener listener;
    application.addListener(&listener);
    application.init();

    EXPECT_THAT(listener.uids, ElementsAre("a token longer than any short text"));
    application.removeListener(&listener);
}

class MissingArguments : public ApplicationTest
{
protected:
    void expectRefusal(int argc, char** argv)
    {
        CapturedOutput error;
        try {
            Application application(argc, argv);
            ADD_FAILURE() << "no exception";
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.getCode(), RETURN_INVALID_PARAMETER);
        }
        const auto lines = error.getDebugLines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].message, "findApplicationLaunchParameters(): throwing exception: Invalid parameter");
        EXPECT_EQ(lines[0].level, 'E');
        EXPECT_EQ(lines[0].module, "Application");
        EXPECT_EQ(lines[0].component, "Application");
    }

    char program[12] = "program";
    char* argv[2] = {program, nullptr};
};

TEST_F(MissingArguments, AreRefusedWithCodeOneAndLoggedOnce)
{
    expectRefusal(0, argv);
    expectRefusal(1, nullptr);
    expectRefusal(0, nullptr);
}

TEST_F(MissingArguments, AreRefusedEvenWhenTheEnvironmentHoldsTheParameters)
{
    const ScopedEnvironment parameters("CORVANE_APP_PARAMETERS", "{}");
    expectRefusal(0, argv);
    expectRefusal(1, nullptr);
}

TEST_F(Identity, ReportsTheHostNameOfTheEnvironmentAfreshOnEachCall)
{
    TestApplication application;
    {
        const ScopedEnvironment none("CORVANE_APP_HOSTNAME", nullptr);
        EXPECT_EQ(application.getHostName(), "Unknown");
    }
    {
        const ScopedEnvironment box("CORVANE_APP_HOSTNAME", "box-17");
        EXPECT_EQ(application.getHostName(), "box-17");
    }
    const ScopedEnvironment empty("CORVANE_APP_HOSTNAME", "");
    EXPECT_EQ(application.getHostName(), "");
}

TEST_F(Identity, ReportsTheProgramPathAsProcessName)
{
    EXPECT_EQ(TestApplication({"/usr/bin/program", "argument"}).getProcessName(), "/usr/bin/program");
}

TEST_F(Identity, ReportsNoProcessNameForANegativeCount)
{
    char program[] = "/usr/bin/QAX";
    char* argv[] = {program, nullptr};
    EXPECT_EQ(Application(-1, argv).getProcessName(), "Unknown");
}

/// Sees what the Singleton keeps to itself.
struct HelperInstance : Singleton<PlatformHelper> {
    static bool exists() { return instance != nullptr; }
};

class HelperOfProgram : public ApplicationTest, public testing::WithParamInterface<std::string>
{
protected:
    FakeSystem system;
};

class OrdinaryProgram : public HelperOfProgram
{
};

TEST_P(OrdinaryProgram, GetsAHelperThatIsStartedOnceAndDeletedAtTheEnd)
{
    auto application = std::make_unique<TestApplication>(std::vector<std::string>{GetParam()});
    EXPECT_FALSE(HelperInstance::exists()) << "init() creates it";

    application->init();
    EXPECT_TRUE(HelperInstance::exists());
    EXPECT_EQ(system.startedHelpers, 1);

    application.reset();
    EXPECT_FALSE(HelperInstance::exists());
}

INSTANTIATE_TEST_SUITE_P(Paths, OrdinaryProgram,
                         testing::Values<std::string>("/usr/bin/oru", "/usr/bin/qax", "/usr/bin/web", "",
                                                      "/opt/QA/X/OR/U/WE/B", "Oru"));

class ManagersProgram : public HelperOfProgram
{
};

TEST_P(ManagersProgram, GetsNoHelper)
{
    TestApplication application({GetParam(), "argument"});
    application.init();

    EXPECT_FALSE(HelperInstance::exists());
    EXPECT_EQ(system.startedHelpers, 0);
}

INSTANTIATE_TEST_SUITE_P(Paths, ManagersProgram,
                         testing::Values<std::string>("/usr/bin/myORUhelper", "QAX", "/opt/WEB/bin/browser",
                                                      "/opt/QAXORU", "aWEB"));

TEST_F(Identity, OnlyTheProgramPathDecidesAboutTheHelper)
{
    FakeSystem system;
    TestApplication application({"/usr/bin/program", "ORU"});
    application.init();

    EXPECT_TRUE(HelperInstance::exists());
}

} // namespace
} // namespace Corvane::Test
