#include "ApplicationFixture.h"

#include <corvane/foundation/Exception.h>
#include <support/CapturedOutput.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

class PriorityAsRoot : public ApplicationTest
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root may lower the nice value";
    }
    TestApplication application;
};

TEST_F(PriorityAsRoot, ReachesTheSystemFromMinusTwentyToNineteen)
{
    for (const int value : {-20, 19, -1, 0}) {
        EXPECT_EQ(application.setPriority(value), RETURN_SUCCESS);
        EXPECT_EQ(getpriority(PRIO_PROCESS, 0), value);
        EXPECT_EQ(application.getPriority(), value);
    }
}

TEST_F(PriorityAsRoot, IsUnchangedWhenAnOrdinaryUserLowersIt)
{
    ASSERT_EQ(application.setPriority(5), RETURN_SUCCESS);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NICE, &none);
        const bool isOrdinary = setresuid(65534, 65534, 65534) == 0;
        try {
            application.setPriority(0);
        } catch (const Exception& exception) {
            _exit(isOrdinary && exception.getCode() == RETURN_REFUSED_BY_SYSTEM && application.getPriority() == 5 ? 0
                                                                                                                  : 1);
        }
        _exit(2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    application.setPriority(0);
}

} // namespace
} // namespace Corvane::Test
