#include "Victim.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/CapturedOutput.h>
#include <support/MissingManager.h>

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string ANNOUNCEMENT = "application 0: LOADING\napplication 0: ABORTED\n";

/// Requires that `text` is one back trace and nothing else. @return the number of its frames
int expectBackTrace(const std::string& text)
{
    const auto lines = splitLines(text);
    int frames = -1;
    if (lines.empty() || std::sscanf(lines[0].c_str(), "Obtained %d stack frames.", &frames) != 1) {
        ADD_FAILURE() << "no back trace: " << text;
        return frames;
    }
    EXPECT_EQ(lines[0], "Obtained " + std::to_string(frames) + " stack frames.");
    EXPECT_GE(frames, 1);
    EXPECT_LE(frames, 10);
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(frames) + 1) << text;
    return frames;
}

void expectLogOf(int signal, const Victim& victim)
{
    const auto lines = parseDebugLines(withoutMissingManager(victim.getError()));
    ASSERT_EQ(lines.size(), 1u) << victim.getError();
    EXPECT_EQ(lines[0].message, "Received Signal [" + std::string(strsignal(signal)) + "]");
    EXPECT_EQ(lines[0].level, 'N');
    EXPECT_EQ(lines[0].module, "Application");
    EXPECT_EQ(lines[0].component, "Application");
}

/// Announced, traced, and then dead of the signal itself.
void expectCrash(Victim& victim, int signal, const std::string& before = ANNOUNCEMENT)
{
    EXPECT_EQ(victim.wait().signal, signal) << victim.getOutput() << victim.getError();
    const std::string output = victim.getOutput();
    ASSERT_EQ(output.substr(0, before.size()), before);
    expectBackTrace(output.substr(before.size()));
    expectLogOf(signal, victim);
}

struct Fault {
    const char* word;
    int signal;
};

class RealFault : public testing::TestWithParam<Fault>
{
};

TEST_P(RealFault, IsAnnouncedTracedAndThenEndsTheProcess)
{
    Victim victim({"create", GetParam().word});
    expectCrash(victim, GetParam().signal);
}

INSTANTIATE_TEST_SUITE_P(Faults, RealFault,
                         testing::Values(Fault{"fault-segv", SIGSEGV}, Fault{"fault-segv-on-thread", SIGSEGV},
                                         Fault{"add-stale-listener", SIGSEGV}, Fault{"remove-stale-listener", SIGSEGV},
                                         Fault{"fault-bus", SIGBUS}, Fault{"fault-ill", SIGILL},
                                         Fault{"abort", SIGABRT}),
                         [](const auto& each) {
                             std::string name = each.param.word;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

#ifdef DIVISION_BY_ZERO_TRAPS
TEST(FatalSignal, IsRaisedByTwoStatisticsWithinOneMicrosecond)
{
    Victim victim({"create", "statistics-twice-at-once"});
    expectCrash(victim, SIGFPE);
}
#endif

class SignalFromOutside : public testing::TestWithParam<int>
{
};

TEST_P(SignalFromOutside, IsAnnouncedTracedAndThenEndsTheProcess)
{
    Victim victim({"create", "wait"});
    ASSERT_TRUE(victim.awaitOutput("waiting\n"));
    victim.sendSignal(GetParam());

    expectCrash(victim, GetParam(), "application 0: LOADING\nwaiting\napplication 0: ABORTED\n");
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalFromOutside, testing::Values(SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS),
                         [](const auto& each) { return std::string(sigabbrev_np(each.param)); });

TEST(FatalSignal, TermIsAnnouncedWithoutABackTrace)
{
    Victim victim({"create", "wait"});
    ASSERT_TRUE(victim.awaitOutput("waiting\n"));
    victim.sendSignal(SIGTERM);

    EXPECT_EQ(victim.wait().signal, SIGTERM);
    EXPECT_EQ(victim.getOutput(), "application 0: LOADING\nwaiting\napplication 0: ABORTED\n");
    expectLogOf(SIGTERM, victim);
}

TEST(FatalSignal, KillIsNotAnnounced)
{
    Victim victim({"create", "wait"});
    ASSERT_TRUE(victim.awaitOutput("waiting\n"));
    victim.sendSignal(SIGKILL);

    EXPECT_EQ(victim.wait().signal, SIGKILL);
    EXPECT_EQ(victim.getOutput(), "application 0: LOADING\nwaiting\n");
    EXPECT_EQ(withoutMissingManager(victim.getError()), "");
}

TEST(FatalSignal, TracesTenFramesOfADeepStack)
{
    Victim victim({"create", "fault-segv-deep"});
    ASSERT_EQ(victim.wait().signal, SIGSEGV);

    EXPECT_EQ(expectBackTrace(victim.getOutput().substr(ANNOUNCEMENT.size())), 10);
}

TEST(FatalSignal, IsAnnouncedByEveryApplicationInTheOrderOfTheirInitialisation)
{
    Victim victim({"create", "create", "create", "destroy-first", "raise-term"});

    EXPECT_EQ(victim.wait().signal, SIGTERM);
    EXPECT_THAT(splitLines(victim.getOutput()),
                ElementsAre("application 0: LOADING", "application 1: LOADING", "application 2: LOADING",
                            "application 1: ABORTED", "application 2: ABORTED"));
}

TEST(FatalSignal, IsAnnouncedByTheOthersAndEndsTheProcessEvenWhenAListenerThrows)
{
    Victim victim({"create", "let-listener-throw", "create", "raise-term"});

    EXPECT_EQ(victim.wait().signal, SIGTERM);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: ABORTED\napplication 1: ABORTED\n"));
    EXPECT_THAT(victim.getError(), HasSubstr("announceAbort(): caught exception: listener"));
}

TEST(FatalSignal, RunsTheActionThatWasThereBeforeTheLibrarys)
{
    Victim victim({"own-action-for-term", "create", "raise-term"});

    EXPECT_EQ(victim.wait().status, 42);
    EXPECT_EQ(victim.getOutput(), ANNOUNCEMENT);
}

TEST(FatalSignal, ThatWasIgnoredBeforeInitStaysIgnored)
{
    Victim victim({"ignore-term", "create", "raise-term", "alive"});

    EXPECT_EQ(victim.wait().status, 0);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: LOADING\nalive\n"));
    EXPECT_THAT(victim.getOutput(), Not(HasSubstr("ABORTED")));
}

TEST(FatalSignal, IsAnnouncedByTheOthersAndEndsTheProcessEvenWhenAListenerAborts)
{
    Victim victim({"create", "let-listener-abort", "create", "let-listener-abort", "create", "raise-term"});

    EXPECT_EQ(victim.wait().signal, SIGABRT);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: ABORTED\napplication 1: ABORTED\n"
                                              "application 2: ABORTED\nObtained "));
}

TEST(FatalSignal, EndsTheProcessByTheFaultOfAListenerThatIsToldOfIt)
{
    Victim victim({"create", "let-listener-fault", "create", "raise-term"});

    EXPECT_EQ(victim.wait().signal, SIGSEGV);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: ABORTED\n"));
}

#ifndef __SANITIZE_THREAD__ // which puts signals off: until a handler or the C library's own write returns
TEST(FatalSignal, WaitsUntilAnotherOneHasBeenAnnouncedToAll)
{
    Victim victim({"create", "let-listener-be-killed", "create", "raise-term"});

    EXPECT_EQ(victim.wait().signal, SIGABRT);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: ABORTED\napplication 1: ABORTED\nObtained "));
}

TEST(FatalSignal, EndsAProcessWhoseStandardOutputNobodyReads)
{
    Victim victim({"create", "block-output", "abort"});

    EXPECT_EQ(victim.wait().signal, SIGABRT);
}
#endif

#ifdef INTERRUPTS_LOCKS // nor has a sanitizer's heap a lock of the C library's
TEST(FatalSignal, OfADamagedHeapIsAnnouncedTracedAndThenEndsTheProcess)
{
    Victim victim({"create", "overrun-heap"});

    EXPECT_EQ(victim.wait().signal, SIGABRT);
    const std::string output = victim.getOutput();
    ASSERT_EQ(output.substr(0, ANNOUNCEMENT.size()), ANNOUNCEMENT);
    expectBackTrace(output.substr(ANNOUNCEMENT.size()));
}

struct Interruption {
    const char* what;
    const char* during;
};

class InterruptedHolder : public testing::TestWithParam<Interruption>
{
};

TEST_P(InterruptedHolder, OfALockDoesNotKeepTheSignalFromBeingAnnounced)
{
    Victim victim({"create", GetParam().what, GetParam().during, "alive"});

    EXPECT_EQ(victim.wait().signal, SIGTERM);
    EXPECT_THAT(victim.getOutput(), HasSubstr("application 0: ABORTED\n"));
    EXPECT_THAT(victim.getOutput(), Not(HasSubstr("alive")));
}

INSTANTIATE_TEST_SUITE_P(Locks, InterruptedHolder,
                         testing::Values(Interruption{"interrupt-list-after-lock", "change-state"},
                                         Interruption{"interrupt-list-before-unlock", "change-state"},
                                         Interruption{"interrupt-list-after-lock", "add-listener"},
                                         Interruption{"interrupt-list-before-unlock", "add-listener"},
                                         Interruption{"interrupt-list-before-unlock", "remove-listener"},
                                         Interruption{"interrupt-applications-after-lock", "create"},
                                         Interruption{"interrupt-applications-before-unlock", "create"}),
                         [](const auto& each) {
                             std::string name = std::string(each.param.what) + "_" + each.param.during;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });
#endif

#ifdef OUTLIVES_THE_LIBRARIES
// The applications are still there when a main loop calls exit(), but not what the library keeps them in.
TEST(FatalSignal, IsThePreviousActionsAgainWhenTheProcessExitsWithApplications)
{
    Victim victim({"create", "create", "raise-term-last", "exit"});

    EXPECT_EQ(victim.wait().signal, SIGTERM);
    EXPECT_THAT(splitLines(victim.getOutput()),
                ElementsAre("application 0: LOADING", "application 1: LOADING", "the libraries are gone"));
}
#endif

#ifndef __SANITIZE_THREAD__ // which minds that the process ends with a mutex that it holds
TEST(FatalSignal, LetsAListenerExitInsteadOfDying)
{
    Victim victim({"create", "let-listener-exit", "raise-term"});

    EXPECT_EQ(victim.wait().status, 43);
    EXPECT_EQ(victim.getOutput(), ANNOUNCEMENT);
}
#endif

TEST(FatalSignal, OfAnotherKindOnlyLeavesALineWhenTheHandlerGetsIt)
{
    Victim victim({"create", "call-handler-with-usr1", "report"});

    EXPECT_EQ(victim.wait().status, 0);
    EXPECT_THAT(victim.getOutput(), HasSubstr("LOADING\nreturned\nILL:handled ABRT:handled"));
    EXPECT_THAT(victim.getOutput(), Not(HasSubstr("ABORTED")));
    expectLogOf(SIGUSR1, victim);
}

} // namespace
} // namespace Corvane::Test
