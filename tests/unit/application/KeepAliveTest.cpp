#include "ApplicationFixture.h"
#include "FakeSystem.h"

#include <atomic>
#include <gmock/gmock.h>
#include <memory>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <thread>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;

/// The loop of a plain application. Delays are noted in the listener's record.
class RunLoop : public ApplicationTest
{
protected:
    RunLoop()
    {
        application->setState(RUNNING);
        application->addListener(&listener);
        system.onDelay = [this](unsigned int milliseconds) {
            listener.heard.push_back(std::to_string(milliseconds) + " ms");
            if (++rounds == 3)
                inThirdRound();
            ASSERT_LT(rounds, 10) << "the loop does not end";
        };
    }
    ~RunLoop() override { application->removeListener(&listener); }

    FakeSystem system;
    RecordingListener listener;
    std::unique_ptr<TestApplication> application = std::make_unique<TestApplication>();
    std::function<void()> inThirdRound = [] {};
    int rounds = 0;
};

TEST_F(RunLoop, SendsAKeepAliveAtOnceAndThenEveryFiveSecondsUntilTheApplicationIsStopped)
{
    inThirdRound = [this] { application->stopRequested = true; };
    application->run();

    EXPECT_THAT(listener.heard, ElementsAre("alive " + RUNNING, "5000 ms", "alive " + RUNNING, "5000 ms",
                                            "alive " + RUNNING, "5000 ms"));
    EXPECT_THAT(listener.uids, Each(std::to_string(getpid())));
}

TEST_F(RunLoop, EndsWithinOneRoundWhenTheApplicationIsTerminatedOrRunsAway)
{
    for (const std::string& state : {TERMINATED, ILifecycleManagement::STATE_RUNAWAY}) {
        application->setState(RUNNING);
        listener.heard.clear();
        rounds = 0;
        inThirdRound = [&] { application->setState(state); };
        application->run();

        EXPECT_EQ(rounds, 3) << state;
        EXPECT_EQ(listener.heard.back(), RUNNING + " > " + state);
    }
}

TEST_F(RunLoop, SendsNoKeepAliveOnceTheApplicationIsTerminatedOrStopped)
{
    application->setState(TERMINATED);
    listener.heard.clear();
    application->run();
    EXPECT_THAT(listener.heard, IsEmpty());

    application->setState(RUNNING);
    listener.heard.clear();
    application->stopRequested = true;
    application->run();
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST_F(RunLoop, GoesOnInEveryOtherState)
{
    const std::string states[] = {ILifecycleManagement::STATE_TERMINATING, ILifecycleManagement::STATE_ABORTED,
                                  ILifecycleManagement::STATE_SUSPENDED};
    system.onDelay = [&](unsigned int) {
        if (rounds == 3)
            application->stopRequested = true;
        else
            application->setState(states[rounds]);
        ++rounds;
    };
    application->run();

    EXPECT_EQ(rounds, 4);
    EXPECT_EQ(listener.heard.back(), "alive " + ILifecycleManagement::STATE_SUSPENDED);
}

TEST_F(RunLoop, IsLeftToAnApplicationThatHasItsOwn)
{
    application->hasOwnLoop = true;
    application->run();

    EXPECT_THAT(listener.heard, IsEmpty());
}

/// Tells what it hears to the test's thread.
class TellingListener : public IApplication::IApplicationListener
{
public:
    void onKeepAlive(const std::string&, const std::string& state) override { keepAlives.put(state); }
    void onStateChange(const std::string&, const std::string&, const std::string&) override {}
    Mailbox<std::string> keepAlives;
};

/// The keep-alive thread. A delay lasts until the test lets it pass.
class KeepAliveThread : public ApplicationTest
{
protected:
    KeepAliveThread()
    {
        system.onDelay = [this](unsigned int milliseconds) {
            delays.put(milliseconds);
            if (!isOpen)
                passes.acquire();
        };
        application->hasOwnLoop = true;
        application->addListener(&listener);
    }
    ~KeepAliveThread() override { end(); }
    void end()
    {
        isOpen = true;
        passes.release();
        application.reset();
    }
    bool awaitKeepAlive()
    {
        std::string state;
        return listener.keepAlives.take(state) && state == ILifecycleManagement::STATE_LOADING;
    }
    bool awaitDelay()
    {
        unsigned int milliseconds = 0;
        return delays.take(milliseconds) && milliseconds == 500;
    }

    FakeSystem system;
    TellingListener listener;
    Mailbox<unsigned int> delays;
    std::counting_semaphore<> passes{0};
    std::atomic<bool> isOpen{false};
    std::unique_ptr<TestApplication> application = std::make_unique<TestApplication>();
};

TEST_F(KeepAliveThread, SendsAKeepAliveAtOnceAndAfterEveryTenDelaysOfHalfASecond)
{
    application->init();
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(awaitKeepAlive());
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(awaitDelay());
            EXPECT_TRUE(listener.keepAlives.isEmpty()) << "during delay " << i;
            passes.release();
        }
    }
    ASSERT_TRUE(awaitKeepAlive());
}

TEST_F(KeepAliveThread, IsNotStartedWithoutALoopOfTheApplicationsOwn)
{
    application->hasOwnLoop = false;
    application->init();
    application.reset();

    EXPECT_EQ(system.joins, 0) << "there was no thread to wait for";
    EXPECT_TRUE(listener.keepAlives.isEmpty());
}

TEST_F(KeepAliveThread, CarriesItsName)
{
    Mailbox<std::string> names;
    system.onDelay = [&](unsigned int) {
        char name[16];
        pthread_getname_np(pthread_self(), name, sizeof name);
        names.put(name);
        if (!isOpen)
            passes.acquire();
    };
    application->init();

    std::string name;
    ASSERT_TRUE(names.take(name));
    EXPECT_EQ(name, "KeepAliveThread");
    end();
}

TEST_F(KeepAliveThread, IsStoppedAndAwaitedByTheDestructionOfTheApplicationAfterOneDelayAtMost)
{
    application->init();
    ASSERT_TRUE(awaitKeepAlive());
    for (int i = 0; i < 3; ++i) {
        passes.release();
        ASSERT_TRUE(awaitDelay());
    }
    ASSERT_TRUE(awaitDelay());
    std::thread destroyer([this] { application.reset(); });
    // The application waits for the thread, so the thread has been asked to stop, in the midst of its fourth delay.
    EXPECT_TRUE(await([this] { return system.joins == 1; }));
    passes.release();
    destroyer.join();

    EXPECT_TRUE(delays.isEmpty());
    EXPECT_TRUE(listener.keepAlives.isEmpty());
}

/// Throws whatever it hears.
class ThrowingListener : public IApplication::IApplicationListener
{
public:
    void onKeepAlive(const std::string&, const std::string&) override { throw std::runtime_error("keep-alive"); }
    void onStateChange(const std::string&, const std::string&, const std::string&) override
    {
        throw std::runtime_error("state");
    }
};

TEST_F(KeepAliveThread, GoesOnWhenAListenerThrowsAndLogsItEveryTime)
{
    ThrowingListener throwing;
    const CapturedOutput error;
    application->init();
    application->addListener(&throwing);
    isOpen = true;
    passes.release();
    // The last one was told of before the throwing listener was called, so two calls of that are over by then.
    for (int round = 0; round < 4; ++round)
        EXPECT_TRUE(awaitKeepAlive());

    EXPECT_THAT(error.getMessages(), Contains("thread(): caught exception: keep-alive").Times(Ge(2)));
    // Before the listener goes: the thread may be calling it.
    end();
}

TEST_F(KeepAliveThread, IsAwaitedAlsoWhenAListenerThrowsAtTheGoodbye)
{
    ThrowingListener throwing;
    application->init();
    ASSERT_TRUE(awaitKeepAlive());
    application->addListener(&throwing);
    const CapturedOutput error;
    end();

    EXPECT_EQ(system.joins, 1);
    EXPECT_THAT(error.getMessages(), Contains("~Application(): caught exception: state"));
}

/// Keeps the last state that it was told.
class LatestStateListener : public IApplication::IApplicationListener
{
public:
    void onKeepAlive(const std::string&, const std::string& state) override
    {
        const std::lock_guard guard(mutex);
        latest = state;
    }
    void onStateChange(const std::string&, const std::string&, const std::string&) override {}
    std::string get()
    {
        const std::lock_guard guard(mutex);
        return latest;
    }

private:
    std::mutex mutex;
    std::string latest;
};

// The state has no lock: the thread copies it while others store it.
TEST_F(KeepAliveThread, TellsTheFinalStateHoweverOftenItChangedMeanwhile)
{
    system.onDelay = [](unsigned int) { std::this_thread::yield(); };
    LatestStateListener latest;
    application->removeListener(&listener);
    application->addListener(&latest);
    application->init();
    for (int i = 0; i < 2000; ++i) {
        application->setState(RUNNING);
        application->suspend();
    }
    application->setState(ILifecycleManagement::STATE_SUSPENDED);

    EXPECT_TRUE(await([&] { return latest.get() == ILifecycleManagement::STATE_SUSPENDED; }));
    application.reset();
}

} // namespace
} // namespace Corvane::Test
