#include "InputFixture.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <linux/capability.h>
#include <semaphore>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

/// What goes wrong on a real machine.
namespace Corvane::Test
{

using InputTrouble = InputTest;

namespace
{

/// From now on this thread, and those that it starts, need a permission to open a file, root's as well.
void giveUpRootsWayIntoFiles()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3]{};
    ASSERT_EQ(syscall(SYS_capget, &header, sets), 0);
    sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
    ASSERT_EQ(syscall(SYS_capset, &header, sets), 0);
}

/// How many folders or files this process watches.
int countWatches()
{
    int count = 0;
    std::error_code gone;
    for (const auto& file : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::read_symlink(file.path(), gone) == "anon_inode:inotify";
    return count;
}

} // namespace

TEST_F(InputTrouble, MayBeThatThereIsNoDeviceAtAll)
{
    enableAll();
    driver.enableHotplug();
    CapturedOutput error;
    driver.start();

    driver.injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(KEY_OK, true), 0);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(error.getText(), "");
}

TEST_F(InputTrouble, LossOfEventsIsMadeUpForByTheStateOfTheDevice)
{
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();
    remote.press(KEY_OK);
    remote.press(KEY_UP);
    ASSERT_EQ(listener.take(2), (Texts{"KEY_OK pressed", "KEY_UP pressed"}));

    remote.lose({{EV_KEY, KEY_OK, 0}, {EV_KEY, KEY_DOWN, 1}});
    EXPECT_EQ(listener.take(2), (Texts{"KEY_DOWN pressed", "KEY_OK released"}));

    remote.release(KEY_DOWN);
    remote.release(KEY_UP);
    EXPECT_EQ(listener.take(2), (Texts{"KEY_DOWN released", "KEY_UP released"}));
}

TEST_F(InputTrouble, LossOfEventsIsALineThatCountsButNotOneForEach)
{
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();
    remote.press(KEY_UP);
    ASSERT_EQ(listener.take(), "KEY_UP pressed");
    CapturedOutput error;

    for (int i = 0; i < 7; ++i) {
        remote.lose({{EV_KEY, KEY_OK, 1}});
        EXPECT_EQ(listener.take(), "KEY_OK pressed");
        remote.release(KEY_OK);
        EXPECT_EQ(listener.take(), "KEY_OK released");
    }

    const auto line = [&](const char* count) {
        return remote.getNode() + " lost events, " + count + " times so far: they were not read in time";
    };
    EXPECT_EQ(error.getMessages(), (Texts{line("1"), line("2"), line("4")}));
}

TEST_F(InputTrouble, LossOfEventsWithinAFrameLeavesNoKeyHeld)
{
    MockDevice pointer(machine, mouse());
    driver.enableMouse();
    driver.start();
    pointer.press(BTN_LEFT);
    ASSERT_EQ(listener.take(), "mouse left pressed");

    pointer.reportOpenFrame({{EV_KEY, BTN_LEFT, 0}, {EV_REL, REL_X, 5}});
    pointer.lose({{EV_KEY, BTN_RIGHT, 1}});

    EXPECT_EQ(listener.take(2), (Texts{"mouse left released", "mouse right pressed"}));
}

TEST_F(InputTrouble, DeviceThatMayNotBeOpenedIsOneLineAndTheOthersWork)
{
    MockDevice forbidden(machine, infrared());
    MockDevice remote(machine, infrared());
    MockDevice pointer(machine, mouse());
    const std::string file = machine.locate(forbidden.getNode());
    ASSERT_EQ(chmod(file.c_str(), 0), 0);
    giveUpRootsWayIntoFiles();
    CapturedOutput error;
    driver.enableIr();
    driver.start();
    remote.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");
    const Texts oneLine{"cannot open " + forbidden.getNode() + ": Permission denied"};
    EXPECT_EQ(error.getMessages(), oneLine);

    // Each change of a switch tries again, and says nothing again.
    driver.enableMouse();
    ASSERT_TRUE(awaitOpen(pointer));
    EXPECT_EQ(error.getMessages(), oneLine);
    ASSERT_EQ(chmod(file.c_str(), S_IRUSR), 0);
    driver.disableMouse();
    EXPECT_TRUE(awaitOpen(forbidden));
}

TEST_F(InputTrouble, DeviceThatMayBeOpenedLaterIsOpenedThenAndNothingIsWatchedAnyMore)
{
    MockDevice first(machine, infrared());
    MockDevice second(machine, infrared());
    for (const MockDevice* device : {&first, &second})
        ASSERT_EQ(chmod(machine.locate(device->getNode()).c_str(), 0), 0);
    giveUpRootsWayIntoFiles();
    CapturedOutput error;
    driver.enableIr();
    driver.start();
    ASSERT_TRUE(await([&] { return error.getMessages().size() == 2; }));

    ASSERT_EQ(chmod(machine.locate(second.getNode()).c_str(), S_IRUSR), 0);
    EXPECT_TRUE(awaitOpen(second));
    EXPECT_FALSE(first.isOpen());
    EXPECT_EQ(countWatches(), 1);
    ASSERT_EQ(chmod(machine.locate(first.getNode()).c_str(), S_IRUSR), 0);
    EXPECT_TRUE(awaitOpen(first));

    EXPECT_TRUE(await([] { return countWatches() == 0; }));
    EXPECT_EQ(error.getMessages().size(), 2U);
}

TEST_F(InputTrouble, KeyboardThatMayOnlyBeReadTypesOnWithoutALight)
{
    MockDevice keys(machine, keyboard());
    ASSERT_EQ(chmod(machine.locate(keys.getNode()).c_str(), S_IRUSR), 0);
    giveUpRootsWayIntoFiles();
    CapturedOutput error;
    driver.enableKeyboard();
    driver.start();

    keys.press(KEY_CAPSLOCK);
    keys.press(KEY_A);

    EXPECT_EQ(listener.take(2), (Texts{"KEY_CAPSLOCK pressed", "'A' pressed"}));
    EXPECT_EQ(error.getText(), "");
}

TEST_F(InputTrouble, DeviceWhoseNodeComesLaterIsOpenedThen)
{
    MockDevice remote(machine, infrared());
    const std::string file = machine.locate(remote.getNode());
    ASSERT_EQ(rename(file.c_str(), (file + ".new").c_str()), 0);
    CapturedOutput error;
    driver.enableIr();
    driver.start();
    ASSERT_TRUE(await([&] { return error.getMessages().size() == 1; }));

    ASSERT_EQ(rename((file + ".new").c_str(), file.c_str()), 0);

    remote.press(KEY_OK);
    EXPECT_EQ(listener.take(), "KEY_OK pressed");
}

TEST_F(InputTrouble, DeviceWhoseNodeIsMissingIsOneLine)
{
    MockDevice remote(machine, infrared());
    MockDevice gone(machine, infrared());
    ASSERT_EQ(unlink(machine.locate(gone.getNode()).c_str()), 0);
    CapturedOutput error;
    driver.enableIr();
    driver.start();

    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(error.getMessages(), Texts{"cannot open " + gone.getNode() + ": No such file or directory"});
}

TEST_F(InputTrouble, DeviceThatTalksNonsenseGoesOnWorking)
{
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();

    remote.report({{EV_KEY, KEY_MAX, 1}, {EV_KEY, 0xFFFF, 1}, {EV_ABS, ABS_MT_SLOT, 5}, {EV_REL, 0xFFFF, -1}});
    remote.report({{0xFFFF, 0xFFFF, 1}, {EV_SYN, SYN_MT_REPORT, 0}, {EV_KEY, KEY_OK, 77}, {EV_KEY, KEY_UP, 0}});
    remote.report({});
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
}

TEST_F(InputTrouble, FloodLosesNothing)
{
    constexpr int COUNT = 10000;
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();
    std::thread hand([&] {
        for (int i = 0; i < COUNT / 2; ++i) {
            remote.press(KEY_OK);
            remote.release(KEY_OK);
        }
    });

    int wrong = 0;
    for (int i = 0; i < COUNT; ++i)
        wrong += listener.take() != (i % 2 == 0 ? "KEY_OK pressed" : "KEY_OK released");
    hand.join();

    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(listener.events.isEmpty());
}

TEST_F(InputTrouble, FloodOfOneDeviceDelaysNoOther)
{
    // As much as the smallest pipe takes: nobody reads yet, and a full pipe would hold the test up.
    constexpr int COUNT = 80;
    static_assert(COUNT * 2 * sizeof(input_event) <= 4096);
    MockDevice flooding(machine, infrared());
    MockDevice pointer(machine, mouse());
    for (int i = 0; i < COUNT; ++i)
        flooding.report({{EV_KEY, KEY_OK, 2}});
    pointer.report({{EV_REL, REL_X, 1}});

    enableAll();
    driver.start();

    const Texts heard = listener.take(COUNT + 1);
    const auto place = std::ranges::find(heard, "mouse by 1,0,0") - heard.begin();
    EXPECT_LE(place, 1) << "each device has its turn after one event of the other";
    EXPECT_EQ(std::ranges::count(heard, "KEY_OK pressed"), COUNT);
}

TEST_F(InputTrouble, ListenerThatIsRemovedWhileEventsFlowIsNotCalledAgain)
{
    MockDevice remote(machine, infrared());
    driver.enableIr();
    driver.start();
    std::atomic<bool> done{false};
    std::thread hand([&] {
        while (!done) {
            remote.press(KEY_OK);
            remote.release(KEY_OK);
        }
    });
    for (int i = 0; i < 100; ++i) {
        InputRecorder passing;
        driver.addInputEventListener(&passing, 0);
        EXPECT_NE(passing.take(), "nothing");
        driver.removeInputEventListener(&passing);
        while (!passing.events.isEmpty())
            passing.take();
        // One more event has gone through the driver since.
        EXPECT_NE(listener.take(), "nothing");
        EXPECT_TRUE(passing.events.isEmpty());
    }
    done = true;
    hand.join();
}

} // namespace Corvane::Test
