#include "ProblemOf.h"
#include <corvane/interfaces/ILifecycleManagement.h>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace Corvane::Test
{

namespace
{

using Statistics = ILifecycleManagement::RuntimeStatistics;

const std::string STATES[] = {ILifecycleManagement::STATE_UNINITIALIZED, ILifecycleManagement::STATE_LOADING,
                              ILifecycleManagement::STATE_RUNNING,       ILifecycleManagement::STATE_SUSPENDING,
                              ILifecycleManagement::STATE_SUSPENDED,     ILifecycleManagement::STATE_RESUMING,
                              ILifecycleManagement::STATE_TERMINATING,   ILifecycleManagement::STATE_TERMINATED,
                              ILifecycleManagement::STATE_ABORTED,       ILifecycleManagement::STATE_RUNAWAY};

const char STATISTICS_TEXT[] = R"({"processName":"menu","hostName":"box","reserved0":1,"reserved1":2,"cpuLoad":3,)"
                               R"("maxResidentSet":4294967295,"reserved2":5,"reserved3":6})";

} // namespace

TEST(Lifecycle, HasTenDifferentStatesThatFitIntoAStringWithoutMemoryOfItsOwn)
{
    EXPECT_EQ((std::set<std::string>(std::begin(STATES), std::end(STATES)).size()), 10U);
    for (const std::string& state : STATES) {
        EXPECT_FALSE(state.empty());
        EXPECT_LE(state.size(), 15U) << state;
    }
}

TEST(Lifecycle, NamesItsStatesAsManagersKnowThem)
{
    EXPECT_EQ(ILifecycleManagement::STATE_UNINITIALIZED, "UNINITIALIZED");
    EXPECT_EQ(ILifecycleManagement::STATE_LOADING, "LOADING");
    EXPECT_EQ(ILifecycleManagement::STATE_RUNNING, "RUNNING");
    EXPECT_EQ(ILifecycleManagement::STATE_SUSPENDING, "SUSPENDING");
    EXPECT_EQ(ILifecycleManagement::STATE_SUSPENDED, "SUSPENDED");
    EXPECT_EQ(ILifecycleManagement::STATE_RESUMING, "RESUMING");
    EXPECT_EQ(ILifecycleManagement::STATE_TERMINATING, "TERMINATING");
    EXPECT_EQ(ILifecycleManagement::STATE_TERMINATED, "TERMINATED");
    EXPECT_EQ(ILifecycleManagement::STATE_ABORTED, "ABORTED");
    EXPECT_EQ(ILifecycleManagement::STATE_RUNAWAY, "RUNAWAY");
}

TEST(Lifecycle, EndsWithTerminatedAbortedAndRunaway)
{
    const std::set<std::string> final = {"TERMINATED", "ABORTED", "RUNAWAY"};
    for (const std::string& state : STATES)
        EXPECT_EQ(ILifecycleManagement::isApplicationTerminated(state), final.contains(state)) << state;
    for (const char* state : {"", "terminated", "TERMINATED ", "TERMINATE"})
        EXPECT_FALSE(ILifecycleManagement::isApplicationTerminated(state)) << state;
}

TEST(RuntimeStatistics, AreWrittenAndReadInTheirOrder)
{
    const Statistics statistics("menu", "box", 1, 2, 3, 4294967295U, 5, 6);
    EXPECT_EQ(statistics.serialize(), STATISTICS_TEXT);

    Deserializer deserializer(STATISTICS_TEXT);
    const Statistics read(deserializer);
    EXPECT_EQ(read.serialize(), STATISTICS_TEXT);
    EXPECT_EQ(read.getProcessName(), "menu");
    EXPECT_EQ(read.getHostName(), "box");
    EXPECT_EQ(read.getCpuLoad(), 3U);
    EXPECT_EQ(read.getMaxResidentSet(), 4294967295U);
}

TEST(RuntimeStatistics, StartEmpty)
{
    EXPECT_EQ(Statistics().serialize(), R"({"processName":"","hostName":"","reserved0":0,"reserved1":0,"cpuLoad":0,)"
                                        R"("maxResidentSet":0,"reserved2":0,"reserved3":0})");
    EXPECT_EQ(Statistics().getObjectType(), "RuntimeStatistics");
}

TEST(RuntimeStatistics, CopiesAreEqual)
{
    const Statistics original("menu", "box", 1, 2, 3, 4294967295U, 5, 6);
    Statistics assigned;
    assigned = original;

    EXPECT_EQ(Statistics(original).serialize(), STATISTICS_TEXT);
    EXPECT_EQ(assigned.serialize(), STATISTICS_TEXT);
    EXPECT_EQ(original.clone()->serialize(), STATISTICS_TEXT);
}

TEST(RuntimeStatistics, RefuseARecordThatIsIncompleteOrWrong)
{
    Deserializer incomplete(R"({"processName":"menu","hostName":"box"})");
    EXPECT_EQ(problemOf([&] { Statistics statistics(incomplete); }), "reserved0: missing");
    Deserializer wrong(R"({"processName":"menu","hostName":null})");
    EXPECT_EQ(problemOf([&] { Statistics statistics(wrong); }), "hostName: expected a string, found null");
}

} // namespace Corvane::Test
