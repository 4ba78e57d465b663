#include "box/EventLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <vector>

namespace Procmand
{
namespace
{

using std::chrono::milliseconds;
using testing::ElementsAre;

class EventLoopTest : public testing::Test
{
protected:
    void note(const std::string& text) { notes.push_back(text); }

    std::mutex lock;
    EventLoop loop{lock};
    std::vector<std::string> notes;
};

} // namespace

TEST_F(EventLoopTest, RunsWhatIsPostedInItsOrderAndUnderTheLock)
{
    loop.post([&] {
        note("one");
        EXPECT_FALSE(lock.try_lock());
    });
    loop.post([&] {
        note("two");
        loop.post([&] { note("posted by a task"); });
        loop.stop();
    });
    loop.run();

    EXPECT_THAT(notes, ElementsAre("one", "two", "posted by a task"));
}

TEST_F(EventLoopTest, RunsTimersOnceAndInTheirOrderWhenDue)
{
    const auto start = std::chrono::steady_clock::now();
    loop.schedule(milliseconds(30), [&] {
        note("late");
        loop.stop();
    });
    loop.schedule(milliseconds(10), [&] { note("early"); });
    loop.run();

    EXPECT_THAT(notes, ElementsAre("early", "late"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
}

TEST_F(EventLoopTest, RunsATimerAfterWhatWasPostedBeforeItWasDue)
{
    loop.post([&] {
        loop.post([&] { note("posted"); });
        loop.schedule(milliseconds(0), [&] {
            note("timer");
            loop.stop();
        });
    });
    loop.run();

    EXPECT_THAT(notes, ElementsAre("posted", "timer"));
}

TEST_F(EventLoopTest, DoesNotRunATimerThatWasTakenBackEvenWhenItIsDue)
{
    EventLoop::Timer timer = loop.schedule(milliseconds(0), [&] { note("taken back"); });
    loop.post([&] { loop.cancel(timer); }); // posted tasks come before timers
    loop.schedule(milliseconds(1), [&] { loop.stop(); });
    loop.run();

    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(timer, 0U);
}

TEST_F(EventLoopTest, DoesNotRunAWatchThatATaskBeforeItTookAway)
{
    const Corvane::FileDescriptor one(eventfd(1, EFD_CLOEXEC));
    const Corvane::FileDescriptor other(eventfd(1, EFD_CLOEXEC));
    const auto takeBothAway = [&](const char* name) {
        note(name);
        loop.unwatch(one.get());
        loop.unwatch(other.get());
        loop.schedule(milliseconds(1), [&] { loop.stop(); });
    };
    loop.watch(one.get(), [&] { takeBothAway("one"); });
    loop.watch(other.get(), [&] { takeBothAway("other"); });
    loop.run();

    EXPECT_EQ(notes.size(), 1U) << "both were readable at once";
}

TEST_F(EventLoopTest, WakesUpForWhatOtherThreadsPost)
{
    std::thread other([&] {
        for (int i = 0; i < 1000; ++i)
            loop.post([&] { note("posted"); });
        loop.post([&] { loop.stop(); });
    });
    loop.run();
    other.join();

    EXPECT_EQ(notes.size(), 1000U);
}

TEST_F(EventLoopTest, DropsWhatComesTooLateWithWhatItOwns)
{
    struct Talkative {
        EventLoop& loop;
        explicit Talkative(EventLoop& loop) : loop(loop) {}
        ~Talkative()
        {
            loop.post([] {});
        }
    };
    std::weak_ptr<Talkative> owned;
    {
        const auto talkative = std::make_shared<Talkative>(loop);
        owned = talkative;
        loop.post([this, talkative] { note("too late"); });
    }
    loop.discard();

    EXPECT_TRUE(owned.expired());
    EXPECT_TRUE(notes.empty());
}

TEST_F(EventLoopTest, RefusesToWatchWhatCannotBeWatched)
{
    EXPECT_THROW(loop.watch(-1, [] {}), std::system_error);
}

} // namespace Procmand
