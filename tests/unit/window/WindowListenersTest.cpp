#include "WindowFakes.h"

#include <array>
#include <stdexcept>

/// Registration with a window, and the walk over its listeners.
namespace Corvane::Test
{

namespace
{

constexpr const char* UID_OPTION = "--authorization-token=u1";

/// Something that a window tells its window listeners.
struct Change {
    const char* name;
    void (*raise)(Window&);
};

const Change CHANGES[] = {{"Focus", [](Window& window) { window.handleFocus(true); }},
                          {"Visibility", [](Window& window) { window.setVisibility(false); }},
                          {"Opacity", [](Window& window) { window.setOpacity(5); }},
                          {"ZOrder", [](Window& window) { window.setZOrder(5); }},
                          {"Location", [](Window& window) { window.setLocation(Rect(5, 5, 5, 5)); }}};

} // namespace

/// A window with the listeners a, b and c, and one more, d, that is not registered.
class WindowWalk : public WindowTest, public ::testing::WithParamInterface<Change>
{
protected:
    WindowWalk()
    {
        for (RecordingWindowListener* listener : {&a, &b, &c})
            window.addListener(listener);
    }

    ~WindowWalk() override
    {
        for (RecordingWindowListener* listener : {&a, &b, &c, &d})
            window.removeListener(listener);
    }

    /// @return the names of the listeners in the order of their calls
    std::string walk()
    {
        journal.clear();
        GetParam().raise(window);
        std::string called;
        const std::string operation = std::string(".on") + GetParam().name + "Change(";
        for (const std::string& entry : journal.read())
            if (entry.find(operation) != std::string::npos)
                called += entry.substr(0, entry.find('.'));
        return called;
    }

    TestWindow window{{"program", "--application-type=player", UID_OPTION}};
    RecordingWindowListener a{"a"};
    RecordingWindowListener b{"b"};
    RecordingWindowListener c{"c"};
    RecordingWindowListener d{"d"};
};

TEST_P(WindowWalk, CallsEachListenerInTheOrderOfRegistration)
{
    EXPECT_EQ(walk(), "abc");
}

TEST_P(WindowWalk, GoesOnWithTheSecondEntryWhenTheFirstRemovesItself)
{
    a.action = [&] { window.removeListener(&a); };
    EXPECT_EQ(walk(), "ac");
    EXPECT_EQ(walk(), "bc");
}

TEST_P(WindowWalk, GoesOnWithTheSecondEntryWhenTheSecondRemovesItself)
{
    b.action = [&] { window.removeListener(&b); };
    EXPECT_EQ(walk(), "abc");
    EXPECT_EQ(walk(), "ac");
}

TEST_P(WindowWalk, CallsTheSecondEntryAgainWhenTheLastRemovesItself)
{
    c.action = [&] { window.removeListener(&c); };
    EXPECT_EQ(walk(), "abcb");
    EXPECT_EQ(walk(), "ab");
}

TEST_P(WindowWalk, GoesOnWithTheSecondEntryWhenAListenerRemovesItsPredecessor)
{
    b.action = [&] { window.removeListener(&a); };
    EXPECT_EQ(walk(), "abc");
    EXPECT_EQ(walk(), "bc");
}

TEST_P(WindowWalk, CallsTheLastAgainWhenItRemovesItsPredecessor)
{
    c.action = [&] { window.removeListener(&b); };
    EXPECT_EQ(walk(), "abcc");
    EXPECT_EQ(walk(), "ac");
}

TEST_P(WindowWalk, LeavesOutASuccessorThatAListenerRemoves)
{
    a.action = [&] { window.removeListener(&b); };
    EXPECT_EQ(walk(), "ac");
    EXPECT_EQ(walk(), "ac");
}

TEST_P(WindowWalk, CallsTheSecondAgainWhenItRemovesItsSuccessor)
{
    b.action = [&] { window.removeListener(&c); };
    EXPECT_EQ(walk(), "abb");
    EXPECT_EQ(walk(), "ab");
}

TEST_P(WindowWalk, EndsWhenAListenerEmptiesTheList)
{
    b.action = [&] {
        for (RecordingWindowListener* listener : {&a, &b, &c})
            window.removeListener(listener);
    };
    EXPECT_EQ(walk(), "ab");
    EXPECT_EQ(walk(), "");
}

TEST_P(WindowWalk, EndsWhenTheOnlyListenerRemovesItself)
{
    window.removeListener(&b);
    window.removeListener(&c);
    a.action = [&] { window.removeListener(&a); };
    EXPECT_EQ(walk(), "a");
    EXPECT_EQ(walk(), "");
}

TEST_P(WindowWalk, RestartsAtTheSecondEntryWhenAListenerAddsOne)
{
    b.action = [&] { window.addListener(&d); };
    EXPECT_EQ(walk(), "abbcd");
    EXPECT_EQ(walk(), "abcd");
}

TEST_P(WindowWalk, CallsNobodyTwiceWhenTheFirstAddsOne)
{
    a.action = [&] { window.addListener(&d); };
    EXPECT_EQ(walk(), "abcd");
}

TEST_P(WindowWalk, DoesNotRestartForARefusedRegistration)
{
    c.action = [&] {
        window.addListener(&a);
        window.removeListener(&d);
        window.addListener(nullptr);
    };
    EXPECT_EQ(walk(), "abc");
}

TEST_P(WindowWalk, RestartsForAChangeThatARefusedRegistrationFollows)
{
    c.action = [&] {
        window.addListener(&d);
        window.addListener(&a);
    };
    EXPECT_EQ(walk(), "abcbcd");
}

TEST_P(WindowWalk, PassesOnWhatAListenerThrowsAndLeavesTheListUnlocked)
{
    b.action = [] { throw std::runtime_error("x"); };
    EXPECT_THROW(walk(), std::runtime_error);

    window.addListener(&d);
    EXPECT_EQ(walk(), "abcd");
}

TEST_P(WindowWalk, MayBeNestedInAnother)
{
    b.action = [&] { window.setOpacity(77); };

    walk();

    const Journal::Entries entries = journal.read();
    EXPECT_EQ(window.getOpacity(), 77U);
    EXPECT_EQ(entries.back().substr(0, 2), "c.");
    EXPECT_EQ(entries.back().find("77)"), std::string::npos) << entries.back();
}

INSTANTIATE_TEST_SUITE_P(EveryChange, WindowWalk, ::testing::ValuesIn(CHANGES),
                         [](const auto& info) { return std::string(info.param.name); });

class WindowRegistration : public WindowTest
{
protected:
    TestWindow window{{"program", "--application-type=player", UID_OPTION}};
};

TEST_F(WindowRegistration, KeepsOneEntryOfAListenerThatIsAddedTwice)
{
    RecordingWindowListener listener("a");
    window.addListener(&listener);
    window.addListener(&listener);

    window.setZOrder(1);
    window.setState(ILifecycleManagement::STATE_RUNNING);

    EXPECT_EQ(journal.read(),
              (Journal::Entries{"a.onZOrderChange(u1, 0, 1)", "a.onStateChange(u1, UNINITIALIZED, RUNNING)"}));
    window.removeListener(&listener);
    window.setZOrder(2);
    EXPECT_EQ(journal.read().size(), 2U);
}

TEST_F(WindowRegistration, TellsAWindowListenerOfTheLifecycleToo)
{
    RecordingWindowListener listener("a");
    window.addListener(&listener);

    window.onKeepAlive("u1", "RUNNING");
    window.removeListener(&listener);
    window.onKeepAlive("u1", "RUNNING");

    EXPECT_EQ(journal.read(), (Journal::Entries{"a.onKeepAlive(u1, RUNNING, )"}));
}

TEST_F(WindowRegistration, TellsAnApplicationListenerOfTheLifecycleOnly)
{
    struct LifecycleListener : IApplication::IApplicationListener {
        void onKeepAlive(const std::string&, const std::string&) override {}
        void onStateChange(const std::string&, const std::string&, const std::string& newState) override
        {
            journal.add(newState);
        }
    } listener;
    window.addListener(&listener);

    window.setZOrder(1);
    window.setState(ILifecycleManagement::STATE_RUNNING);
    window.removeListener(&listener);
    window.setState(ILifecycleManagement::STATE_SUSPENDED);

    EXPECT_EQ(journal.read(), (Journal::Entries{"RUNNING"}));
}

TEST_F(WindowRegistration, RefusesWhatIsNoListenerOfAWindow)
{
    struct OtherListener : IListener {
    } other;

    window.addListener(&other);
    window.addListener(nullptr);
    window.removeListener(&other);
    window.removeListener(nullptr);
    window.setZOrder(1);
    window.setState(ILifecycleManagement::STATE_RUNNING);

    EXPECT_EQ(window.getZOrder(), 1U);
}

TEST_F(WindowRegistration, LetsAnObserverOfTheInterfaceRegister)
{
    RecordingWindowListener listener("a");
    IObservable& observable = window;
    observable.addListener(&listener);
    window.setVisibility(false);
    observable.removeListener(&listener);
    window.setVisibility(true);

    EXPECT_EQ(journal.read(), (Journal::Entries{"a.onVisibilityChange(u1, true, false)"}));
}

} // namespace Corvane::Test
