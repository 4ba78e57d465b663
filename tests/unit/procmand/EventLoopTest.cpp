#include "box/EventLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Procmand
{
namespace
{

using std::chrono::milliseconds;
using testing::ElementsAre;

/// How often a loop was woken up.
std::atomic<unsigned int> wakeUps{0};

class EventLoopTest : public testing::Test
{
protected:
    void note(const std::string& text) { notes.push_back(text); }

    std::mutex lock;
    EventLoop loop{lock};
    std::vector<std::string> notes;
};

} // namespace

} // namespace Procmand

/// The test's own in the place of the C library's, which writes the number the same way.
extern "C" int eventfd_write(int descriptor, eventfd_t value)
{
    ++Procmand::wakeUps;
    return write(descriptor, &value, sizeof value) == sizeof value ? 0 : -1;
}

namespace Procmand
{

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

TEST_F(EventLoopTest, KeepsTheWatchOfADescriptorThatIsWatchedAlready)
{
    const Corvane::FileDescriptor event(eventfd(1, EFD_CLOEXEC));
    loop.watch(event.get(), [&] {
        note("first");
        loop.stop();
    });
    EXPECT_THROW(loop.watch(event.get(), [&] { note("second"); }), std::system_error);
    loop.run();

    EXPECT_THAT(notes, ElementsAre("first"));
}

TEST_F(EventLoopTest, GoesOnWhateverATaskThrows)
{
    const Corvane::FileDescriptor event(eventfd(1, EFD_CLOEXEC));
    loop.watch(event.get(), [&] {
        loop.unwatch(event.get());
        note("watch");
        throw 1; // of no known type
    });
    loop.post([&] {
        note("posted");
        throw std::runtime_error("a test's");
    });
    loop.schedule(milliseconds(0), [&] {
        note("timer");
        throw std::runtime_error("a test's");
    });
    loop.schedule(milliseconds(20), [&] { loop.stop(); });
    loop.run();

    EXPECT_THAT(notes, ElementsAre("posted", "timer", "watch"));
}

TEST_F(EventLoopTest, CopiesNoTaskForThatTakesMemory)
{
    struct Counted {
        std::vector<std::string>& copies;
        explicit Counted(std::vector<std::string>& copies) : copies(copies) {}
        Counted(const Counted& other) : copies(other.copies) { copies.push_back("copy"); }
        Counted(Counted&& other) noexcept : copies(other.copies) {}
    };
    const Corvane::FileDescriptor event(eventfd(1, EFD_CLOEXEC));
    loop.post([counted = Counted(notes)] {});
    loop.schedule(milliseconds(0), [counted = Counted(notes)] {});
    loop.watch(event.get(), [this, counted = Counted(notes)] { loop.stop(); });
    notes.clear();
    loop.run();

    EXPECT_TRUE(notes.empty());
}

TEST_F(EventLoopTest, RunsATimerAgainThatLacksMemory)
{
    loop.schedule(milliseconds(0), [&] {
        note("try");
        if (notes.size() < 3)
            throw std::bad_alloc();
        loop.stop();
    });
    loop.run();

    EXPECT_THAT(notes, ElementsAre("try", "try", "try"));
}

TEST_F(EventLoopTest, CancelsATimerThatWaitsToBeRunAgain)
{
    EventLoop::Timer timer = loop.schedule(milliseconds(0), [&] {
        note("try");
        throw std::bad_alloc();
    });
    loop.schedule(milliseconds(1), [&] { loop.cancel(timer); });
    loop.schedule(milliseconds(300), [&] { loop.stop(); }); // longer than such a timer waits
    loop.run();

    EXPECT_THAT(notes, ElementsAre("try"));
}

TEST_F(EventLoopTest, DoesNotGiveAnEventToAWatchThatGotTheDescriptorOfAnother)
{
    Corvane::FileDescriptor one(eventfd(1, EFD_CLOEXEC));
    Corvane::FileDescriptor other(eventfd(1, EFD_CLOEXEC));
    // Whichever comes first, closes the other one, whose number a quiet one gets; both events are there already.
    const auto replace = [&](Corvane::FileDescriptor& first, Corvane::FileDescriptor& second) {
        loop.unwatch(first.get());
        loop.unwatch(second.get());
        const int number = second.get();
        second.reset();
        second.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        EXPECT_EQ(second.get(), number);
        loop.watch(second.get(), [&] { note("an event of another"); });
        loop.schedule(milliseconds(20), [&] { loop.stop(); });
    };
    loop.watch(one.get(), [&] { replace(one, other); });
    loop.watch(other.get(), [&] { replace(other, one); });
    loop.run();

    EXPECT_TRUE(notes.empty());
}

TEST_F(EventLoopTest, IsNotWokenUpByWhatItsOwnTasksBegin)
{
    const Corvane::FileDescriptor event(eventfd(1, EFD_CLOEXEC));
    // With a wake-up of its own the loop would go round once more before the timer is due, at no cost but a system
    // call: so the calls are counted.
    loop.watch(event.get(), [&] {
        loop.unwatch(event.get());
        wakeUps = 0;
        for (int i = 0; i < 10; ++i) {
            EventLoop::Timer timer = loop.schedule(milliseconds(1000), [] {});
            loop.cancel(timer);
            loop.post([] {});
        }
        EXPECT_EQ(wakeUps, 0U);
        loop.stop();
    });
    loop.run();
}

} // namespace Procmand
