#include "InputFixture.h"

#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <libudev.h>
#include <unistd.h>

/// Machines that tell of their devices in different ways, or not at all.
namespace Corvane::Test
{

namespace
{

/// What the system is to say in the place of this machine. The driver asks on its own thread, after start().
struct System {
    std::atomic<bool> hasDaemon = false;
    bool hasMessages = true;
    Mailbox<std::string> sources; ///< those that were asked for
};

std::atomic<System*> mocked = nullptr;

template <class Function>
Function* findReal(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

class InputMonitor : public InputTest
{
protected:
    InputMonitor() { mocked = &system; }
    ~InputMonitor() override { mocked = nullptr; }

    /// @return the source that the driver asks for next
    std::string takeSource()
    {
        std::string source = "none";
        system.sources.take(source);
        return source;
    }

    System system;
};

} // namespace

TEST_F(InputMonitor, HearsTheDaemonWhereOneRuns)
{
    system.hasDaemon = true;
    enableAll();
    driver.enableHotplug();
    driver.start();
    MockDevice remote(machine, infrared());
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(takeSource(), "udev");
}

TEST_F(InputMonitor, HearsTheKernelWhereNoDaemonRuns)
{
    enableAll();
    driver.enableHotplug();
    driver.start();
    MockDevice remote(machine, infrared());
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(takeSource(), "kernel");
}

TEST_F(InputMonitor, HearsADaemonThatIsStartedLaterAndWaitsForTheSeatThatItGives)
{
    InputRecorder second;
    driver.addInputEventListener(&second, 2);
    MockDevice early(machine, infrared());
    enableAll();
    driver.enableHotplug();
    driver.start();
    early.press(KEY_UP);
    ASSERT_EQ(listener.take(), "KEY_UP pressed");
    ASSERT_EQ(takeSource(), "kernel");

    system.hasDaemon = true;
    DeviceSpecification raw = keyboard();
    raw.properties.clear();
    MockDevice late(machine, raw);
    late.press(KEY_A);
    EXPECT_EQ(takeSource(), "udev");
    // Read when it has looked for all devices once more.
    early.release(KEY_UP);
    EXPECT_EQ(listener.take(), "KEY_UP released");
    EXPECT_FALSE(late.isOpen());

    late.announce("add", onSeat(keyboard(), "seat2").properties);
    EXPECT_EQ(second.take(), "'a' pressed");
    EXPECT_TRUE(listener.events.isEmpty());
    driver.removeInputEventListener(&second);
}

TEST_F(InputMonitor, ForgetsWhatIsPulledOutWhileADaemonIsStarted)
{
    MockDevice remote(machine, infrared());
    enableAll();
    driver.enableHotplug();
    driver.start();
    remote.press(KEY_OK);
    ASSERT_EQ(listener.take(), "KEY_OK pressed");

    system.hasDaemon = true;
    remote.announce("remove", {});

    EXPECT_EQ(listener.take(), "KEY_OK released");
}

TEST_F(InputMonitor, MayBeDeniedWhichIsOneLineAndTheDevicesThatAreThereWork)
{
    system.hasMessages = false;
    MockDevice remote(machine, infrared());
    CapturedOutput error;
    enableAll();
    driver.enableHotplug();
    driver.start();
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(error.getMessages(), Texts{"devices that are plugged in are not noticed: the system does not tell"});
    driver.disableHotplug();
    remote.release(KEY_OK);
    EXPECT_EQ(listener.take(), "KEY_OK released");
}

TEST_F(InputMonitor, WaitsWhereThereIsNotEvenAFolderOfDevices)
{
    std::filesystem::remove(machine.locate("/dev/input"));
    CapturedOutput error;
    enableAll();
    driver.enableHotplug();
    driver.start();
    driver.injectInputEvent(std::make_shared<const IWindowEvent::KeyEvent>(KEY_UP, true), 0);
    ASSERT_EQ(listener.take(), "KEY_UP pressed");

    std::filesystem::create_directory(machine.locate("/dev/input"));
    MockDevice remote(machine, infrared());
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(error.getText(), "");
}

} // namespace Corvane::Test

// In the place of the system's own; the driver's library calls these.

extern "C" CORVANE_EXPORT int access(const char* path, int mode) noexcept
{
    const Corvane::Test::System* const system = Corvane::Test::mocked;
    if (system != nullptr && std::strcmp(path, "/run/udev/control") == 0)
        return system->hasDaemon ? 0 : -1;
    return Corvane::Test::findReal(access, "access")(path, mode);
}

extern "C" CORVANE_EXPORT udev_monitor* udev_monitor_new_from_netlink(udev* library, const char* source)
{
    if (Corvane::Test::System* const system = Corvane::Test::mocked) {
        system->sources.put(source);
        if (!system->hasMessages)
            return nullptr;
    }
    return Corvane::Test::findReal(udev_monitor_new_from_netlink, "udev_monitor_new_from_netlink")(library, source);
}
