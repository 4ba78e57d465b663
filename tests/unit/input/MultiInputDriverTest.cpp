#include "InputFakes.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace Corvane::Test
{

namespace
{

/// How many threads of this process carry the driver's name.
int countDriverThreads()
{
    int count = 0;
    std::error_code gone;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        count += name == "InputDriver";
    }
    return count;
}

} // namespace

TEST(MultiInputDriver, DeliversNothingBeforeItIsStarted)
{
    RecordingInputListener listener;
    {
        MultiInputDriver driver;
        driver.addInputEventListener(&listener, 0);

        driver.injectInputEvent(key(28), 0);

        EXPECT_EQ(countDriverThreads(), 0);
    }
    EXPECT_TRUE(listener.heard.isEmpty());
}

TEST(MultiInputDriver, DeliversWhatWaitedWhenItIsStarted)
{
    RecordingInputListener listener;
    MultiInputDriver driver;
    driver.addInputEventListener(&listener, 0);
    driver.injectInputEvent(key(28), 0);

    driver.start();

    EXPECT_EQ(listener.takeCode(), 28U);
}

TEST(MultiInputDriver, DeliversInTheOrderOfInjectionOnOneThreadOfItsOwn)
{
    RecordingInputListener listener;
    MultiInputDriver driver;
    driver.addInputEventListener(&listener, 0);
    driver.start();

    for (KeyEvent::Code code = 1; code <= 1000; ++code)
        driver.injectInputEvent(key(code), 0);

    std::thread::id deliverer;
    for (KeyEvent::Code code = 1; code <= 1000; ++code) {
        RecordingInputListener::Heard heard{};
        ASSERT_TRUE(listener.heard.take(heard));
        EXPECT_EQ(heard.code, code);
        EXPECT_NE(heard.thread, std::this_thread::get_id());
        EXPECT_TRUE(code == 1 || heard.thread == deliverer);
        deliverer = heard.thread;
    }
}

TEST(MultiInputDriver, HasOneThreadHoweverOftenItIsStarted)
{
    MultiInputDriver driver;

    driver.start();
    driver.start();

    EXPECT_TRUE(await([] { return countDriverThreads() != 0; }));
    EXPECT_EQ(countDriverThreads(), 1);
}

TEST(MultiInputDriver, IsStartedFromSeveralThreadsAtOnce)
{
    MultiInputDriver driver;
    std::thread other([&driver] { driver.start(); });
    driver.start();
    other.join();

    EXPECT_TRUE(await([] { return countDriverThreads() != 0; }));
    EXPECT_EQ(countDriverThreads(), 1);
}

/// A thread's own, so it is destroyed at the thread's end. It holds that up: who does not wait for it is ahead of it.
struct EndOfThread {
    ~EndOfThread()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        *seen = true;
    }

    std::atomic<bool>* seen;
};

// Not by the system's list of threads: a thread that has been joined may stay in it for a moment.
TEST(MultiInputDriver, EndsItsThreadWhenItIsDestroyed)
{
    std::atomic<bool> ended = false;
    RecordingInputListener listener;
    listener.action = [&ended](KeyEvent::Code) { thread_local const EndOfThread end{&ended}; };
    {
        MultiInputDriver driver;
        driver.addInputEventListener(&listener, 0);
        driver.start();
        driver.injectInputEvent(key(28), 0);
        ASSERT_EQ(listener.takeCode(), 28U);
        EXPECT_FALSE(ended);
    }
    EXPECT_TRUE(ended);
}

TEST(MultiInputDriver, DropsWhatWasNotDeliveredWhenItIsDestroyed)
{
    RecordingInputListener listener;
    const std::shared_ptr<const KeyEvent> event = key(2);
    {
        MultiInputDriver driver;
        driver.addInputEventListener(&listener, 0);
        driver.injectInputEvent(event, 0);
        EXPECT_EQ(event.use_count(), 2);
    }
    EXPECT_TRUE(listener.heard.isEmpty());
    EXPECT_EQ(event.use_count(), 1);
}

TEST(MultiInputDriver, IgnoresAnEventThatIsNone)
{
    RecordingInputListener listener;
    MultiInputDriver driver;
    driver.addInputEventListener(&listener, 0);
    driver.start();

    driver.injectInputEvent(nullptr, 0);
    driver.injectInputEvent(key(5), 0);

    EXPECT_EQ(listener.takeCode(), 5U);
}

TEST(MultiInputDriver, HasEveryClassDisabledAtFirst)
{
    MultiInputDriver driver;

    EXPECT_FALSE(driver.isHotplugEnabled());
    EXPECT_FALSE(driver.isMouseEnabled());
    EXPECT_FALSE(driver.isKeyboardEnabled());
    EXPECT_FALSE(driver.isIrEnabled());
}

/// One class of devices: how it is switched and asked for.
struct DeviceClass {
    const char* name;
    void (InputDriver::*enable)();
    void (InputDriver::*disable)();
    bool (MultiInputDriver::*isEnabled)() const;
};

const DeviceClass DEVICE_CLASSES[] = {
    {"Hotplug", &InputDriver::enableHotplug, &InputDriver::disableHotplug, &MultiInputDriver::isHotplugEnabled},
    {"Mouse", &InputDriver::enableMouse, &InputDriver::disableMouse, &MultiInputDriver::isMouseEnabled},
    {"Keyboard", &InputDriver::enableKeyboard, &InputDriver::disableKeyboard, &MultiInputDriver::isKeyboardEnabled},
    {"Ir", &InputDriver::enableIr, &InputDriver::disableIr, &MultiInputDriver::isIrEnabled}};

class DeviceClassSwitch : public ::testing::TestWithParam<DeviceClass>
{
};

TEST_P(DeviceClassSwitch, TurnsItsOwnClassOnAndOffAndNoOther)
{
    MultiInputDriver driver;

    (driver.*GetParam().enable)();
    for (const DeviceClass& device : DEVICE_CLASSES)
        EXPECT_EQ((driver.*device.isEnabled)(), device.isEnabled == GetParam().isEnabled) << device.name;

    (driver.*GetParam().disable)();
    EXPECT_FALSE((driver.*GetParam().isEnabled)());
}

INSTANTIATE_TEST_SUITE_P(MultiInputDriver, DeviceClassSwitch, ::testing::ValuesIn(DEVICE_CLASSES),
                         [](const auto& info) { return info.param.name; });

} // namespace Corvane::Test
