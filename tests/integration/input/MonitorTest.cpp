#include "InputFixture.h"

#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <libudev.h>
#include <optional>
#include <unistd.h>

/// Machines that tell of their devices in different ways, or not at all.
namespace Corvane::Test
{

namespace
{

/// What the system is to say in the place of this machine. The driver asks on its own thread, after start().
struct System {
    bool hasDaemon = false;
    bool hasMessages = true;
    std::optional<std::string> source; ///< the one that was asked for
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
    EXPECT_EQ(system.source, "udev");
}

TEST_F(InputMonitor, HearsTheKernelWhereNoDaemonRuns)
{
    enableAll();
    driver.enableHotplug();
    driver.start();
    MockDevice remote(machine, infrared());
    remote.press(KEY_OK);

    EXPECT_EQ(listener.take(), "KEY_OK pressed");
    EXPECT_EQ(system.source, "kernel");
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
        system->source = source;
        if (!system->hasMessages)
            return nullptr;
    }
    return Corvane::Test::findReal(udev_monitor_new_from_netlink, "udev_monitor_new_from_netlink")(library, source);
}
