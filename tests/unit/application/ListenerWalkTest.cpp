#include "ApplicationFixture.h"

#include <atomic>
#include <gmock/gmock.h>
#include <map>
#include <ostream>
#include <stdexcept>
#include <thread>

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;

/// Which of the two notifications is walked; the rules are the same.
enum class Notification { KEEP_ALIVE, STATE_CHANGE };

void PrintTo(Notification notification, std::ostream* stream)
{
    *stream << (notification == Notification::KEEP_ALIVE ? "KeepAlive" : "StateChange");
}

/// Listeners A, B and C in this order, and further ones; the letters of those that were called, in order.
class ListenerWalk : public ApplicationTest, public testing::WithParamInterface<Notification>
{
protected:
    ListenerWalk()
    {
        for (const char name : {'A', 'B', 'C', 'D'})
            at(name).onCall = [this, name] { noteCall(name); };
        for (const char name : {'A', 'B', 'C'})
            add(name);
    }
    RecordingListener& at(char name) { return listeners[name]; }
    void add(char name) { application.addListener(&at(name)); }
    void remove(char name) { application.removeListener(&at(name)); }
    void when(char name, std::function<void()> action) { actions[name] = std::move(action); }

    /// @return who was called, in order
    std::string walk()
    {
        called.clear();
        if (GetParam() == Notification::KEEP_ALIVE)
            application.onKeepAlive("uid", "state");
        else
            application.onStateChange("uid", "old", "new");
        return called;
    }

private:
    void noteCall(char name)
    {
        called += name;
        ASSERT_LT(called.size(), 20u) << "the walk does not end";
        if (actions[name])
            actions[name]();
    }

    std::map<char, RecordingListener> listeners;
    std::map<char, std::function<void()>> actions;
    std::string called;

protected:
    TestApplication application;
};

INSTANTIATE_TEST_SUITE_P(BothNotifications, ListenerWalk,
                         testing::Values(Notification::KEEP_ALIVE, Notification::STATE_CHANGE),
                         testing::PrintToStringParamName());

TEST_P(ListenerWalk, CallsEveryListenerOnceInTheOrderOfRegistration)
{
    EXPECT_EQ(walk(), "ABC");
    EXPECT_EQ(walk(), "ABC");
}

TEST_P(ListenerWalk, PassesTheArgumentsOn)
{
    walk();

    EXPECT_THAT(at('B').uids, ElementsAre("uid"));
    EXPECT_THAT(at('B').heard, ElementsAre(GetParam() == Notification::KEEP_ALIVE ? "alive state" : "old > new"));
}

TEST_P(ListenerWalk, CallsNobodyWithoutListeners)
{
    for (const char name : {'A', 'B', 'C'})
        remove(name);
    EXPECT_EQ(walk(), "");
}

TEST_P(ListenerWalk, KeepsOneEntryOfAListenerThatIsAddedTwice)
{
    add('B');
    EXPECT_EQ(walk(), "ABC");
    remove('B');
    EXPECT_EQ(walk(), "AC");
}

TEST_P(ListenerWalk, IgnoresTheRemovalOfAListenerThatIsNotThere)
{
    remove('D');
    application.removeListener(nullptr);
    EXPECT_EQ(walk(), "ABC");
}

TEST_P(ListenerWalk, RefusesNothingAndListenersOfAnotherKind)
{
    struct OtherListener : IListener {
    } other;
    application.addListener(nullptr);
    application.addListener(&other);
    application.removeListener(&other);
    EXPECT_EQ(walk(), "ABC");
}

TEST_P(ListenerWalk, DoesNotRestartAfterARefusedChange)
{
    when('C', [this] {
        add('C');
        remove('D');
        application.addListener(nullptr);
    });
    EXPECT_EQ(walk(), "ABC");
}

TEST_P(ListenerWalk, GoesOnWithTheEntryThatIsNowSecondWhenTheFirstRemovesItself)
{
    when('A', [this] { remove('A'); });
    EXPECT_EQ(walk(), "AC");
    EXPECT_EQ(walk(), "BC");
}

TEST_P(ListenerWalk, GoesOnWithTheSecondEntryWhenTheSecondRemovesItself)
{
    when('B', [this] { remove('B'); });
    EXPECT_EQ(walk(), "ABC");
    EXPECT_EQ(walk(), "AC");
}

TEST_P(ListenerWalk, CallsTheSecondEntryAgainWhenTheLastRemovesItself)
{
    when('C', [this] { remove('C'); });
    EXPECT_EQ(walk(), "ABCB");
}

TEST_P(ListenerWalk, RestartsWhenAListenerRemovesItsPredecessor)
{
    when('B', [this] { remove('A'); });
    EXPECT_EQ(walk(), "ABC");
    EXPECT_EQ(walk(), "BC");

    add('A');
    when('B', {});
    when('A', [this] { remove('C'); });
    EXPECT_EQ(walk(), "BCAA") << "the remover is called again, as the second entry";
}

TEST_P(ListenerWalk, RestartsWhenAListenerRemovesItsSuccessor)
{
    when('A', [this] { remove('B'); });
    EXPECT_EQ(walk(), "AC");

    add('D');
    when('A', {});
    when('C', [this] { remove('D'); });
    EXPECT_EQ(walk(), "ACC");
}

TEST_P(ListenerWalk, EndsWhenAListenerRemovesAll)
{
    when('B', [this] {
        for (const char name : {'A', 'B', 'C'})
            remove(name);
    });
    EXPECT_EQ(walk(), "AB");
    EXPECT_EQ(walk(), "");
}

TEST_P(ListenerWalk, EndsWhenAListenerLeavesOneEntry)
{
    when('A', [this] {
        remove('A');
        remove('B');
    });
    EXPECT_EQ(walk(), "A") << "the entry that is first now is not called";
    EXPECT_EQ(walk(), "C");
}

TEST_P(ListenerWalk, ReachesAListenerThatTheFirstOneAdds)
{
    when('A', [this] { add('D'); });
    EXPECT_EQ(walk(), "ABCD");
}

TEST_P(ListenerWalk, CallsOthersTwiceWhenALaterListenerAddsOne)
{
    when('C', [this] { add('D'); });
    EXPECT_EQ(walk(), "ABCBCD");
}

TEST_P(ListenerWalk, DoesNotRestartForAChangeBeforeIt)
{
    add('D');
    EXPECT_EQ(walk(), "ABCD");
}

TEST_P(ListenerWalk, LetsAnExceptionThroughAndLeavesTheListFree)
{
    when('B', [] { throw std::runtime_error("listener"); });
    EXPECT_THROW(walk(), std::runtime_error);

    when('B', {});
    // A mutex that were still held would stop these for good.
    remove('A');
    std::thread([this] { add('D'); }).join();
    EXPECT_EQ(walk(), "BCD");
}

TEST_P(ListenerWalk, MayBeStartedFromWithinAnother)
{
    bool nested = false;
    when('B', [&] {
        if (!std::exchange(nested, true))
            application.onKeepAlive("uid", "nested");
    });
    EXPECT_EQ(walk(), "ABABCC");
    when('B', {});
}

/// Counts only: its calls come from two threads.
class CountingListener : public IApplication::IApplicationListener
{
public:
    void onKeepAlive(const std::string&, const std::string&) override { ++calls; }
    void onStateChange(const std::string&, const std::string&, const std::string&) override { ++calls; }
    std::atomic<int> calls{0};
};

TEST_F(ApplicationTest, ListenersMayComeAndGoOnAnotherThreadDuringWalks)
{
    TestApplication application;
    CountingListener steady;
    CountingListener visitor;
    application.addListener(&steady);
    std::atomic<bool> over{false};
    std::thread other([&] {
        while (!over) {
            application.addListener(&visitor);
            application.removeListener(&visitor);
        }
    });
    constexpr int WALKS = 2000;
    for (int i = 0; i < WALKS; ++i)
        application.onKeepAlive("uid", "state");
    over = true;
    other.join();

    EXPECT_GE(steady.calls, WALKS);
    application.removeListener(&steady);
}

} // namespace
} // namespace Corvane::Test
