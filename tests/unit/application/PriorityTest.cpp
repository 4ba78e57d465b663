#include "ApplicationFixture.h"
#include "FakeSystem.h"

#include <cerrno>
#include <corvane/foundation/Exception.h>
#include <cstring>
#include <gmock/gmock.h>
#include <support/CapturedOutput.h>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class Priority : public ApplicationTest
{
protected:
    /// @return the code that `operation` throws, after it has logged exactly `message`
    template <class Operation>
    void expectFailure(Operation operation, ReturnCode code, const std::string& message)
    {
        CapturedOutput error;
        try {
            operation();
            ADD_FAILURE() << "no exception";
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.getCode(), code);
        }
        const auto lines = error.getDebugLines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].message, message);
        EXPECT_EQ(lines[0].level, 'E');
        EXPECT_EQ(lines[0].module, "Application");
        EXPECT_EQ(lines[0].component, "Application");
    }

    FakeSystem system;
    TestApplication application;
};

TEST_F(Priority, IsTheProcessesNiceValue)
{
    for (const int value : {-20, -1, 0, 19}) {
        system.priority = value;
        EXPECT_EQ(application.getPriority(), value);
    }
    const FakeSystem::PriorityCall query{PRIO_PROCESS, static_cast<unsigned int>(getpid()), 0};
    EXPECT_THAT(system.priorityQueries, ElementsAre(query, query, query, query));
}

TEST_F(Priority, IsReadInSpiteOfAnOldError)
{
    system.priority = -1;
    errno = EINVAL;
    EXPECT_EQ(application.getPriority(), -1);
}

TEST_F(Priority, ThatCannotBeReadIsCodeOne)
{
    system.priorityError = ESRCH;
    expectFailure([this] { application.getPriority(); }, RETURN_INVALID_PARAMETER,
                  std::string("getpriority failed ") + strerror(ESRCH));
}

TEST_F(Priority, ReachesTheSystemOverItsWholeRange)
{
    for (const int value : {-20, -1, 0, 5, 19})
        EXPECT_EQ(application.setPriority(value), RETURN_SUCCESS);

    const auto self = static_cast<unsigned int>(getpid());
    using Call = FakeSystem::PriorityCall;
    EXPECT_THAT(system.priorityChanges,
                ElementsAre(Call{PRIO_PROCESS, self, -20}, Call{PRIO_PROCESS, self, -1}, Call{PRIO_PROCESS, self, 0},
                            Call{PRIO_PROCESS, self, 5}, Call{PRIO_PROCESS, self, 19}));
}

TEST_F(Priority, OutsideTheRangeIsCodeOneAndNeverReachesTheSystem)
{
    for (const int value : {-21, 20, 2147483647, -2147483647 - 1})
        expectFailure([&] { application.setPriority(value); }, RETURN_INVALID_PARAMETER, "invalid priority");

    EXPECT_THAT(system.priorityChanges, IsEmpty());
}

TEST_F(Priority, ThatTheSystemRefusesIsCodeSeven)
{
    system.priorityError = EACCES;
    expectFailure([this] { application.setPriority(0); }, RETURN_REFUSED_BY_SYSTEM,
                  std::string("setpriority failed ") + strerror(EACCES));
}

} // namespace
} // namespace Corvane::Test
