#include "ServerFakes.h"
#include <allocation/AllocationCount.h>

/// What a server announces: the names and payloads, to the letter.
namespace Corvane::Test
{

class Notifications : public ServerTest
{
protected:
    Notifications()
    {
        windowServer.addListener(&subscriber);
        serviceServer.addListener(&subscriber);
    }

    RecordingSubscriber subscriber;
};

TEST_F(Notifications, TellThatTheProcessIsAlive)
{
    window.onKeepAlive("w", "RUNNING");

    EXPECT_EQ(journal.read(), (Journal::Entries{R"(IApplication::onKeepAlive {"uid":"w","state":"RUNNING"})"}));
}

TEST_F(Notifications, TellChangesOfTheState)
{
    window.setState(ILifecycleManagement::STATE_RUNNING);
    service.setState(ILifecycleManagement::STATE_LOADING);

    EXPECT_EQ(journal.read(),
              (Journal::Entries{
                  R"(IApplication::onStateChange {"uid":"w","oldState":"UNINITIALIZED","newState":"RUNNING"})",
                  R"(IApplication::onStateChange {"uid":"s","oldState":"UNINITIALIZED","newState":"LOADING"})"}));
}

TEST_F(Notifications, TellChangesOfTheFocus)
{
    window.handleFocus(true);

    EXPECT_EQ(journal.read().back(), R"(IWindow::onFocusChange {"uid":"w","oldIsFocused":false,"newIsFocused":true})");
}

TEST_F(Notifications, TellChangesOfTheVisibility)
{
    window.setVisibility(false);

    EXPECT_EQ(
        journal.read(),
        (Journal::Entries{R"(IWindow::onVisibilityChange {"uid":"w","oldVisibility":true,"newVisibility":false})"}));
}

TEST_F(Notifications, TellChangesOfTheOpacity)
{
    window.setOpacity(300);

    EXPECT_EQ(journal.read(),
              (Journal::Entries{R"(IWindow::onOpacityChange {"uid":"w","oldOpacity":200,"newOpacity":44})"}));
}

TEST_F(Notifications, TellChangesOfTheZOrder)
{
    window.setZOrder(4294967295U);

    EXPECT_EQ(journal.read(),
              (Journal::Entries{R"(IWindow::onZOrderChange {"uid":"w","oldZOrder":3,"newZOrder":4294967295})"}));
}

TEST_F(Notifications, TellChangesOfTheLocation)
{
    window.setLocation(Rect(-5, 6, 7, 8));

    EXPECT_EQ(journal.read(), (Journal::Entries{R"(IWindow::onLocationChange {"uid":"w","oldLocation":)"
                                                R"({"x":1,"y":2,"width":3,"height":4},"newLocation":)"
                                                R"({"x":-5,"y":6,"width":7,"height":8}})"}));
}

TEST_F(Notifications, DropTheIndexOfACompositorsChange)
{
    IWindowCompositing::IWindowCompositingListener& listener = windowServer;
    listener.onVisibilityChange("w", 9U, true, false);
    listener.onOpacityChange("w", 9U, 1U, 2U);
    listener.onZOrderChange("w", 9U, 3U, 4U);
    listener.onLocationChange("w", 9U, Rect(0, 0, 1, 1), Rect(0, 0, 2, 2));

    EXPECT_EQ(
        journal.read(),
        (Journal::Entries{R"(IWindow::onVisibilityChange {"uid":"w","oldVisibility":true,"newVisibility":false})",
                          R"(IWindow::onOpacityChange {"uid":"w","oldOpacity":1,"newOpacity":2})",
                          R"(IWindow::onZOrderChange {"uid":"w","oldZOrder":3,"newZOrder":4})",
                          R"(IWindow::onLocationChange {"uid":"w","oldLocation":{"x":0,"y":0,"width":1,"height":1},)"
                          R"("newLocation":{"x":0,"y":0,"width":2,"height":2}})"}));
}

TEST_F(Notifications, EscapeWhatTheUidHolds)
{
    windowServer.onKeepAlive("a\"b\n", "RUNNING");

    EXPECT_EQ(journal.read(), (Journal::Entries{R"(IApplication::onKeepAlive {"uid":"a\"b\n","state":"RUNNING"})"}));
}

TEST_F(Notifications, TellOfTheEndAfterTheServerHasForgottenItsWindow)
{
    IApplication* seen = &window;
    subscriber.action = [&] { seen = windowServer.getSingleton(); };

    window.setState(ILifecycleManagement::STATE_TERMINATED);

    EXPECT_EQ(seen, nullptr);
    EXPECT_EQ(journal.read().size(), 1U);
}

TEST_F(Notifications, TellOfTheEndOnceAndStillOfWhatFollows)
{
    window.setState(ILifecycleManagement::STATE_ABORTED);
    window.setState(ILifecycleManagement::STATE_TERMINATED);

    EXPECT_EQ(
        journal.read(),
        (Journal::Entries{R"(IApplication::onStateChange {"uid":"w","oldState":"UNINITIALIZED","newState":"ABORTED"})",
                          R"(IApplication::onStateChange {"uid":"w","oldState":"ABORTED","newState":"TERMINATED"})"}));
}

TEST_F(Notifications, PassAFailureOnToWhoeverRaisedTheEvent)
{
    subscriber.action = [] { throw std::runtime_error("x"); };

    EXPECT_THROW(window.setOpacity(1), std::runtime_error);
    subscriber.action = nullptr;
}

TEST_F(Notifications, AllocateNoMemory)
{
    OpenServer server(&window);
    const std::string uid = "0123456789abcdef0123456789abcdef";
    const Rect rect(1, 2, 3, 4);
    const std::string longestState(255, '\x01'); // each of its bytes escaped
    // Whatever is made ready on first use is ready then.
    server.onKeepAlive(uid, ILifecycleManagement::STATE_RUNNING);

    const unsigned long before = countAllocations();
    server.onKeepAlive(uid, ILifecycleManagement::STATE_RUNNING);
    server.onFocusChange(uid, false, true);
    server.onVisibilityChange(uid, false, true);
    server.onOpacityChange(uid, 1U, 2U);
    server.onZOrderChange(uid, 1U, 2U);
    server.onLocationChange(uid, rect, rect);
    server.onStateChange(uid, longestState, ILifecycleManagement::STATE_ABORTED);
    EXPECT_EQ(countAllocations(), before);

    journal.add(uid);
    EXPECT_GT(countAllocations(), before);
}

} // namespace Corvane::Test
