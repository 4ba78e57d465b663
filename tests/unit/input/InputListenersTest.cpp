#include "InputFakes.h"

#include <array>
#include <atomic>
#include <corvane/foundation/Exception.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <support/CapturedOutput.h>

namespace Corvane::Test
{

/// A started driver with a last listener behind those of the test: once it has heard a key, all others have.
class InputListeners : public ::testing::Test
{
protected:
    InputListeners() { driver.start(); }

    /// Delivers a key to the listeners of session 0 that are registered now, and waits until it is done.
    void press(KeyEvent::Code code)
    {
        driver.removeInputEventListener(&last);
        driver.addInputEventListener(&last, 0);
        driver.injectInputEvent(key(code), 0);
        ASSERT_EQ(last.takeCode(), code);
    }

    RecordingInputListener a;
    RecordingInputListener b;
    RecordingInputListener last;
    MultiInputDriver driver;
};

TEST_F(InputListeners, HearOnlyTheirOwnSession)
{
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&b, 7);

    driver.injectInputEvent(key(1), 7);
    press(2);

    EXPECT_EQ(b.takeCode(), 1U);
    EXPECT_TRUE(b.heard.isEmpty());
    EXPECT_EQ(a.takeCode(), 2U);
    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, AreCalledInTheOrderOfTheirRegistration)
{
    Mailbox<char> order;
    a.action = [&](KeyEvent::Code) { order.put('a'); };
    b.action = [&](KeyEvent::Code) { order.put('b'); };
    driver.addInputEventListener(&b, 0);
    driver.addInputEventListener(&a, 0);

    press(1);

    char first = 0;
    char second = 0;
    ASSERT_TRUE(order.take(first) && order.take(second));
    EXPECT_EQ(first, 'b');
    EXPECT_EQ(second, 'a');
}

TEST_F(InputListeners, HearEachEventOnceHoweverOftenTheyAreRegistered)
{
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&a, 0);

    press(1);

    EXPECT_EQ(a.takeCode(), 1U);
    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, AreMovedToTheSessionGivenLast)
{
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&a, 3);

    driver.injectInputEvent(key(9), 3);
    press(1);

    EXPECT_EQ(a.takeCode(), 9U);
    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, MayBeNoneAtAll)
{
    driver.addInputEventListener(nullptr, 0);
    driver.removeInputEventListener(nullptr);
    driver.removeInputEventListener(&a);

    press(1);

    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, HearNothingAfterTheirRemoval)
{
    driver.addInputEventListener(&a, 0);
    press(1);
    ASSERT_EQ(a.takeCode(), 1U);

    driver.removeInputEventListener(&a);
    press(2);

    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, MayTakeThemselvesOffInTheirCall)
{
    a.action = [&](KeyEvent::Code) { driver.removeInputEventListener(&a); };
    driver.addInputEventListener(&a, 0);

    press(1);
    press(2);

    EXPECT_EQ(a.takeCode(), 1U);
    EXPECT_TRUE(a.heard.isEmpty());
}

TEST_F(InputListeners, AreNotCalledForTheEventDuringWhichTheyAreTakenOff)
{
    a.action = [&](KeyEvent::Code) { driver.removeInputEventListener(&b); };
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&b, 0);

    press(1);

    EXPECT_TRUE(b.heard.isEmpty());
}

TEST_F(InputListeners, HearTheNextEventWhenTheyAreAddedInACall)
{
    a.action = [&](KeyEvent::Code) { driver.addInputEventListener(&b, 0); };
    driver.addInputEventListener(&a, 0);

    press(1);
    press(2);

    EXPECT_EQ(b.takeCode(), 2U);
    EXPECT_TRUE(b.heard.isEmpty());
}

TEST_F(InputListeners, MayInjectEvents)
{
    a.action = [&](KeyEvent::Code code) {
        if (code < 3)
            driver.injectInputEvent(key(code + 1), 0);
    };
    driver.addInputEventListener(&a, 0);

    driver.injectInputEvent(key(1), 0);

    EXPECT_EQ(a.takeCode(), 1U);
    EXPECT_EQ(a.takeCode(), 2U);
    EXPECT_EQ(a.takeCode(), 3U);
}

TEST_F(InputListeners, AreAwaitedByTheirRemovalWhileTheirCallRuns)
{
    Mailbox<bool> mayReturn;
    std::atomic<bool> removed{false};
    a.action = [&](KeyEvent::Code) {
        bool ignored = false;
        mayReturn.take(ignored);
        // Were the removal not waiting for this very call, it would end in this time.
        await([&] { return removed.load(); }, std::chrono::milliseconds(200));
        EXPECT_FALSE(removed.load());
    };
    driver.addInputEventListener(&a, 0);
    driver.injectInputEvent(key(1), 0);
    ASSERT_EQ(a.takeCode(), 1U);

    std::thread remover([&] {
        driver.removeInputEventListener(&a);
        removed = true;
    });
    mayReturn.put(true);
    remover.join();

    EXPECT_TRUE(removed.load());
}

TEST_F(InputListeners, AreNotAwaitedByTheRemovalOfAnotherOne)
{
    Mailbox<bool> mayReturn;
    a.action = [&](KeyEvent::Code) {
        bool ignored = false;
        mayReturn.take(ignored);
    };
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&b, 0);
    driver.injectInputEvent(key(1), 0);
    ASSERT_EQ(a.takeCode(), 1U);

    driver.removeInputEventListener(&b);
    mayReturn.put(true);
    driver.removeInputEventListener(&a);
    press(2);

    EXPECT_TRUE(b.heard.isEmpty());
}

TEST_F(InputListeners, ThatThrowLeaveTheOthersTheirInput)
{
    a.action = [](KeyEvent::Code code) {
        if (code == 1)
            throw std::runtime_error("x");
        if (code == 2)
            throw Exception(RETURN_INVALID_STATE);
        throw 3;
    };
    driver.addInputEventListener(&a, 0);
    driver.addInputEventListener(&b, 0);

    CapturedOutput error;
    for (KeyEvent::Code code = 1; code <= 3; ++code)
        press(code);

    for (KeyEvent::Code code = 1; code <= 3; ++code)
        EXPECT_EQ(b.takeCode(), code);
    EXPECT_EQ(error.getMessages(),
              (std::vector<std::string>{"call(): caught exception: x", "call(): caught exception: Invalid state",
                                        "call(): caught unknown exception"}));
}

/// Notices a call after its removal; and it keeps the events coming while it is told to: each call asks for the next
/// event, so that there is always one to deliver and never more than one that waits.
class ComingAndGoing : public virtual IWindowEvent::IInputEventListener
{
public:
    int onInputEvent(const IWindowEvent::InputEvent&) override
    {
        ++calls;
        if (gone)
            ++strayCalls;
        if (next)
            next();
        return 0;
    }

    std::atomic<int> calls{0};
    std::atomic<int> strayCalls{0};
    std::atomic<bool> gone{false};
    std::function<void()> next;
};

TEST_F(InputListeners, ComeAndGoOnSeveralThreadsWhileEventsAreDelivered)
{
    std::atomic<bool> done{false};
    ComingAndGoing pump;
    pump.next = [&] {
        if (!done)
            driver.injectInputEvent(key(1), 0);
    };
    driver.addInputEventListener(&pump, 0);
    driver.injectInputEvent(key(1), 0);
    std::array<ComingAndGoing, 100> listeners;
    const auto churn = [&](std::size_t first) {
        for (std::size_t i = first; i < listeners.size(); i += 2) {
            ComingAndGoing& listener = listeners[i];
            driver.addInputEventListener(&listener, 0);
            EXPECT_TRUE(await([&] { return listener.calls > 0; }));
            driver.removeInputEventListener(&listener);
            listener.gone = true;
        }
    };
    std::thread other(churn, 0);
    churn(1);
    other.join();
    done = true;

    // One event of the pump's may still wait before this one.
    driver.addInputEventListener(&last, 0);
    driver.injectInputEvent(key(2), 0);
    KeyEvent::Code code = last.takeCode();
    if (code == 1)
        code = last.takeCode();
    EXPECT_EQ(code, 2U);

    for (const ComingAndGoing& listener : listeners)
        EXPECT_EQ(listener.strayCalls, 0);
    driver.removeInputEventListener(&pump);
}

} // namespace Corvane::Test
