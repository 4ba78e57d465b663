#include "InputFakes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <support/DriverThread.h>

/// Windows never give their reference on the driver back, so its thread runs when the process ends. These children end
/// through exit(), with all that the process does there; a sanitizer's report makes the exit code another one.
namespace Corvane::Test
{

namespace
{

MultiInputDriver* startDriver()
{
    auto* const driver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
    driver->start();
    return driver;
}

} // namespace

TEST(ProcessExitDeathTest, IsNotHinderedByADriverThatSleeps)
{
    EXPECT_EXIT(
        {
            startDriver();
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ProcessExitDeathTest, IsNotHinderedByADriverThatHasEventsAndAListener)
{
    EXPECT_EXIT(
        {
            static auto* const listener = new RecordingInputListener;
            MultiInputDriver* const driver = startDriver();
            driver->addInputEventListener(listener, 0);
            for (KeyEvent::Code code = 1; code <= 100; ++code)
                driver->injectInputEvent(key(code), 0);
            std::exit(listener->takeCode() == 1 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ProcessExitDeathTest, IsNotHinderedByADriverThatWasNeverStarted)
{
    EXPECT_EXIT(
        {
            Singleton<InputDriver>::getInstance<MultiInputDriver>()->injectInputEvent(key(1), 0);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(SharedDriver, IsOneUntilItsLastReferenceIsGivenBack)
{
    auto* const first = startDriver();
    auto* const second = Singleton<InputDriver>::getInstance<MultiInputDriver>();
    RecordingInputListener listener;
    EXPECT_EQ(first, second);

    delete first;
    second->addInputEventListener(&listener, 0);
    second->injectInputEvent(key(4), 0);
    EXPECT_EQ(listener.takeCode(), 4U);

    second->enableHotplug();
    delete static_cast<InputDriver*>(second);

    auto* const next = Singleton<InputDriver>::getInstance<MultiInputDriver>();
    EXPECT_FALSE(next->isHotplugEnabled());
    delete next;
}

TEST(SharedDriver, MayBeGivenBackForGoodInsideAListenerWhoseCallIsThenTheLast)
{
    MultiInputDriver* const driver = startDriver();
    RecordingInputListener listener;
    Mailbox<bool> mayDelete;
    listener.action = [&](KeyEvent::Code) {
        bool ignored = false;
        mayDelete.take(ignored);
        delete driver;
    };
    driver->addInputEventListener(&listener, 0);
    driver->injectInputEvent(key(1), 0);
    // What waits is freed with the rest of the driver, which is not before its thread has ended.
    const auto freed = std::make_shared<Mailbox<bool>>();
    const auto waiting = [freed](const KeyEvent* event) {
        delete event;
        freed->put(true);
    };
    driver->injectInputEvent({new KeyEvent(2, true), waiting}, 0);
    mayDelete.put(true);

    bool isFreed = false;
    EXPECT_TRUE(freed->take(isFreed));
    EXPECT_EQ(listener.takeCode(), 1U);
    EXPECT_TRUE(listener.heard.isEmpty());
    for (const char* thread : {"InputDriver", "InputReader"})
        EXPECT_TRUE(await([thread] { return readThreadFile(thread, "comm").empty(); })) << thread;
}

} // namespace Corvane::Test
