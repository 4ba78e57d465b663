#include "ApplicationFixture.h"

#include <atomic>
#include <corvane/foundation/Exception.h>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <support/CapturedOutput.h>
#include <thread>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> STATES{UNINITIALIZED, LOADING,    RUNNING, SUSPENDING, SUSPENDED,     RESUMING,
                                      TERMINATING,   TERMINATED, ABORTED, RUNAWAY,    "AUTHOR'S OWN"};

class Lifecycle : public ApplicationTest
{
protected:
    Lifecycle() { application->addListener(&listener); }

    /// Brings a fresh application to a state by changes that are allowed, and forgets what was heard of them.
    void startIn(const std::string& state)
    {
        application = std::make_unique<TestApplication>();
        application->addListener(&listener);
        if (state == SUSPENDING)
            application->setState(RUNNING);
        if (state == RESUMING)
            application->setState(SUSPENDED);
        application->setState(state);
        ASSERT_EQ(application->getState(), state);
        listener.heard.clear();
    }

    RecordingListener listener;
    std::unique_ptr<TestApplication> application = std::make_unique<TestApplication>();
};

TEST_F(Lifecycle, BeginsUninitialized)
{
    EXPECT_EQ(application->getState(), UNINITIALIZED);
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST_F(Lifecycle, IsLoadingAfterInitAndTellsItOnce)
{
    application->init();

    EXPECT_EQ(application->getState(), LOADING);
    EXPECT_THAT(listener.heard, ElementsAre(UNINITIALIZED + " > " + LOADING));
    EXPECT_THAT(listener.uids, ElementsAre(std::to_string(getpid())));
}

/// The table of allowed changes, as the managers know it.
bool isAllowed(const std::string& from, const std::string& to)
{
    if (from == to)
        return false;
    if (to == LOADING)
        return from == UNINITIALIZED;
    if (to == SUSPENDING)
        return from == LOADING || from == RUNNING;
    if (to == RESUMING)
        return from == SUSPENDING || from == SUSPENDED;
    return to != TERMINATING || from != TERMINATED;
}

TEST_F(Lifecycle, AcceptsExactlyTheChangesOfTheTable)
{
    for (const std::string& from : STATES) {
        for (const std::string& to : STATES) {
            SCOPED_TRACE(from + " to " + to);
            startIn(from);
            application->setState(to);

            if (isAllowed(from, to)) {
                EXPECT_EQ(application->getState(), to);
                EXPECT_THAT(listener.heard, ElementsAre(from + " > " + to));
            } else {
                EXPECT_EQ(application->getState(), from);
                EXPECT_THAT(listener.heard, IsEmpty());
            }
        }
    }
}

TEST_F(Lifecycle, RefusesSuspendBeforeLoadingAndTellsNobody)
{
    application->suspend();

    EXPECT_EQ(application->getState(), UNINITIALIZED);
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST_F(Lifecycle, RefusesSuspendWhenSuspended)
{
    startIn(SUSPENDED);
    application->suspend();

    EXPECT_EQ(application->getState(), SUSPENDED);
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST_F(Lifecycle, SuspendsWhenRunning)
{
    startIn(RUNNING);
    application->suspend();

    EXPECT_THAT(listener.heard, ElementsAre(RUNNING + " > " + SUSPENDING));
}

TEST_F(Lifecycle, ActivatesWhenSuspendedButNotWhenRunning)
{
    startIn(RUNNING);
    application->activate();
    EXPECT_THAT(listener.heard, IsEmpty());

    startIn(SUSPENDED);
    application->activate();
    EXPECT_THAT(listener.heard, ElementsAre(SUSPENDED + " > " + RESUMING));
}

TEST_F(Lifecycle, TerminatesWhenAbortedButNotWhenTerminated)
{
    startIn(TERMINATED);
    application->terminate();
    EXPECT_THAT(listener.heard, IsEmpty());

    startIn(ABORTED);
    application->terminate();
    EXPECT_THAT(listener.heard, ElementsAre(ABORTED + " > " + TERMINATING));
}

TEST_F(Lifecycle, ForRemoteCallersIgnoresTheirUid)
{
    IApplication& remote = *application;
    remote.setState("caller", RUNNING);
    EXPECT_EQ(remote.getState("caller"), RUNNING);
    remote.suspend("caller");
    remote.activate("caller");
    remote.terminate("caller");

    EXPECT_THAT(listener.heard, ElementsAre(UNINITIALIZED + " > " + RUNNING, RUNNING + " > " + SUSPENDING,
                                            SUSPENDING + " > " + RESUMING, RESUMING + " > " + TERMINATING));
}

TEST_F(Lifecycle, HoldsTheNewStateWhenListenersHearOfIt)
{
    listener.onCall = [&] { EXPECT_EQ(application->getState(), RUNNING); };
    application->setState(RUNNING);
    listener.onCall = [] {};

    EXPECT_THAT(listener.heard, ElementsAre(UNINITIALIZED + " > " + RUNNING));
}

TEST_F(Lifecycle, SaysGoodbyeOnceOnDestruction)
{
    startIn(RUNNING);
    application.reset();

    EXPECT_THAT(listener.heard, ElementsAre(RUNNING + " > " + TERMINATED));
}

TEST_F(Lifecycle, LogsWhatAListenerThrowsAtTheGoodbyeAndGoesOn)
{
    const std::pair<std::function<void()>, std::string> failures[] = {
        {[] { throw std::runtime_error("listener"); }, "~Application(): caught exception: listener"},
        {[] { throw Exception(RETURN_TIMED_OUT); }, "~Application(): caught exception: Timed out"},
        {[] { throw 7; }, "~Application(): caught unknown exception"}};
    for (const auto& [failure, message] : failures) {
        startIn(RUNNING);
        listener.onCall = failure;
        const CapturedOutput error;
        application.reset();
        listener.onCall = [] {};

        EXPECT_THAT(error.getMessages(), ElementsAre(message));
        EXPECT_THAT(listener.heard, ElementsAre(RUNNING + " > " + TERMINATED));
    }
}

TEST_F(Lifecycle, SaysNoGoodbyeTwice)
{
    startIn(TERMINATED);
    application.reset();

    EXPECT_THAT(listener.heard, IsEmpty());
}

/// @return whether a state is at most torn: of a length that is allowed, and of bytes that some state had
bool isMadeOfStates(const std::string& state)
{
    return state.size() <= 255 && state.find_first_not_of(UNINITIALIZED + "xy" + '\0') == std::string::npos;
}

// The state has no lock, and a remote manager gives it whatever text it likes.
TEST_F(Lifecycle, MayBeReadWhileOthersReplaceTextsOfUpTo255Bytes)
{
    for (int round = 0; round < 200; ++round) {
        TestApplication fresh;
        std::atomic<int> setters{2};
        const auto grow = [&](char letter) {
            for (std::size_t length = 1; length <= 255; ++length)
                fresh.setState(std::string(length, letter));
            --setters;
        };
        const std::jthread one(grow, 'x');
        const std::jthread another(grow, 'y');
        while (setters > 0 && !HasFailure())
            EXPECT_PRED1(isMadeOfStates, fresh.getState());
    }
}

/// An application whose author takes part in everything.
class OverridingApplication : public TestApplication
{
public:
    explicit OverridingApplication(std::vector<std::string>& calls) : calls(calls) {}
    std::string getState() override { return answer.empty() ? TestApplication::getState() : answer; }
    void setState(const std::string& state) override
    {
        calls.push_back("setState " + state);
        TestApplication::setState(state);
    }
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override
    {
        calls.push_back("onStateChange " + oldState + " > " + newState);
        TestApplication::onStateChange(uid, oldState, newState);
    }

    std::string answer;

private:
    std::vector<std::string>& calls;
};

class OverriddenLifecycle : public ApplicationTest
{
protected:
    std::vector<std::string> calls;
    std::unique_ptr<OverridingApplication> application = std::make_unique<OverridingApplication>(calls);
};

TEST_F(OverriddenLifecycle, SeesTheRequestsAndHearsOfChangesFirst)
{
    RecordingListener listener;
    listener.onCall = [&] { calls.push_back("listener"); };
    application->addListener(&listener);
    application->init();
    application->suspend();
    application->activate();
    application->terminate();

    EXPECT_THAT(calls,
                ElementsAre("setState " + LOADING, "onStateChange " + UNINITIALIZED + " > " + LOADING, "listener",
                            "setState " + SUSPENDING, "onStateChange " + LOADING + " > " + SUSPENDING, "listener",
                            "setState " + RESUMING, "onStateChange " + SUSPENDING + " > " + RESUMING, "listener",
                            "setState " + TERMINATING, "onStateChange " + RESUMING + " > " + TERMINATING, "listener"));
    application->removeListener(&listener);
}

TEST_F(OverriddenLifecycle, DecidesByTheStateThatTheAuthorTells)
{
    application->answer = RUNNING;
    application->setState(RUNNING);
    EXPECT_THAT(calls, ElementsAre("setState " + RUNNING)) << "no change of what is told to be running";

    application->suspend();
    EXPECT_THAT(calls.back(), "onStateChange " + UNINITIALIZED + " > " + SUSPENDING);
}

TEST_F(OverriddenLifecycle, IsNoLongerTheAuthorsOnDestruction)
{
    RecordingListener listener;
    application->addListener(&listener);
    application.reset();

    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(listener.heard, ElementsAre(UNINITIALIZED + " > " + TERMINATED));
}

} // namespace
} // namespace Corvane::Test
