#include "Victim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/CapturedOutput.h>

// Which actions are in force for the signals, as applications come and go.

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;

const std::string NOTHING_HANDLED = "ILL:default ABRT:default FPE:default KILL:default SEGV:default TERM:default "
                                    "BUS:default ";
const std::string ALL_HANDLED = "ILL:handled ABRT:handled FPE:handled KILL:default SEGV:handled TERM:handled "
                                "BUS:handled ";

/// @return the lines that the program wrote, but for those about states
std::vector<std::string> run(const std::vector<std::string>& words)
{
    Victim victim(words);
    EXPECT_EQ(victim.wait().status, 0) << victim.getOutput() << victim.getError();
    std::vector<std::string> lines;
    for (const std::string& line : splitLines(victim.getOutput()))
        if (line.find("application") == std::string::npos)
            lines.push_back(line);
    return lines;
}

TEST(SignalActions, AreInForceFromTheFirstInitToTheEndOfTheLastApplication)
{
    EXPECT_THAT(
        run({"report", "create", "report", "create", "report", "destroy-first", "report", "destroy-first", "report"}),
        ElementsAre(NOTHING_HANDLED, ALL_HANDLED, ALL_HANDLED, ALL_HANDLED, NOTHING_HANDLED));
}

TEST(SignalActions, ComeBackForTheNextApplication)
{
    EXPECT_THAT(run({"create", "destroy-first", "create", "report", "destroy-first", "report"}),
                ElementsAre(ALL_HANDLED, NOTHING_HANDLED));
}

TEST(SignalActions, LeaveTheProgramsOwnOnesAsTheyWere)
{
    const std::string before = "ILL:ignored ABRT:default FPE:default KILL:default SEGV:default TERM:own BUS:default ";
    EXPECT_THAT(run({"ignore-ill", "own-action-for-term", "report", "create", "report", "destroy-first", "report"}),
                ElementsAre(before,
                            "ILL:ignored ABRT:handled FPE:handled KILL:default SEGV:handled TERM:handled BUS:handled ",
                            before));
}

TEST(SignalActions, AreReadAndInstalledOnceInTheGivenOrderWithoutFlagsAndMask)
{
    EXPECT_THAT(run({"ignore-term", "trace", "create", "create"}),
                ElementsAre("query ILL", "install ILL flags 0 mask empty",   //
                            "query ABRT", "install ABRT flags 0 mask empty", //
                            "query FPE", "install FPE flags 0 mask empty",   //
                            "query KILL", "install KILL flags 0 mask empty", //
                            "query SEGV", "install SEGV flags 0 mask empty", //
                            "query TERM",                                    //
                            "query BUS", "install BUS flags 0 mask empty",
                            // From the end of the process, which destroys both.
                            "restore ILL flags 0 mask empty", "restore ABRT flags 0 mask empty",
                            "restore FPE flags 0 mask empty", "restore KILL flags 0 mask empty",
                            "restore SEGV flags 0 mask empty", testing::MatchesRegex("restore TERM .*"),
                            "restore BUS flags 0 mask empty"));
}

// Deliberate: the count of users goes down for an application that was never initialised, too, and wraps then, so that
// the next one finds it above zero.
TEST(SignalActions, AreNotTakenByTheApplicationAfterOneThatWasNeverInitialised)
{
    EXPECT_THAT(run({"construct", "destroy-first", "create", "report"}), ElementsAre(NOTHING_HANDLED));
}

} // namespace
} // namespace Corvane::Test
