#pragma once

#include "MockDevice.h"

#include <corvane/input/MultiInputDriver.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/input-event-codes.h>
#include <sstream>
#include <string>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/EventText.h>
#include <sys/syscall.h>
#include <vector>

namespace Corvane::Test
{

using Texts = std::vector<std::string>;

/// Keeps what it hears, in words.
class InputRecorder : public virtual IWindowEvent::IInputEventListener
{
public:
    int onInputEvent(const IWindowEvent::InputEvent& event) override
    {
        events.put(eventText(event));
        return 0;
    }

    /// @return the next event; "nothing" when none comes
    std::string take()
    {
        std::string text = "nothing";
        events.take(text);
        return text;
    }
    Texts take(std::size_t count)
    {
        Texts texts;
        for (std::size_t i = 0; i < count; ++i)
            texts.push_back(take());
        return texts;
    }

    Mailbox<std::string> events;
};

/// What the system says of the driver's thread in a file of this name; "" when there is no such thread.
inline std::string readDriverFile(const std::string& name)
{
    const auto read = [](const std::filesystem::path& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
        if (read(task.path() / "comm") == "InputDriver\n")
            return read(task.path() / name);
    return "";
}

/// How often the driver's thread went to sleep.
inline std::string countDriverSleeps()
{
    const std::string status = readDriverFile("status");
    const std::size_t at = status.find("\nvoluntary_ctxt_switches:");
    return at != std::string::npos ? status.substr(at + 1, status.find('\n', at + 1) - at - 1) : "";
}

/// Whether the driver's thread sleeps until a descriptor wakes it, however long that takes. It is not enough that it
/// sleeps: it may just wait for a lock or for memory.
inline bool isDriverAsleep()
{
    std::istringstream call(readDriverFile("syscall"));
    long number = 0;
    std::string descriptor, events, count, timeout;
    call >> number >> descriptor >> events >> count >> timeout;
    return (number == SYS_epoll_wait || number == SYS_epoll_pwait) && timeout.ends_with("ffffffff");
}

/// A driver on a machine without devices, and a listener of session 0. The driver is not started.
class InputTest : public ::testing::Test
{
protected:
    InputTest() { driver.addInputEventListener(&listener, 0); }

    void enableAll()
    {
        driver.enableMouse();
        driver.enableKeyboard();
        driver.enableIr();
    }
    static bool awaitOpen(const MockDevice& device)
    {
        return await([&] { return device.isOpen(); });
    }
    static bool awaitClosed(const MockDevice& device)
    {
        return await([&] { return !device.isOpen(); });
    }

    MockMachine machine;
    InputRecorder listener;
    MultiInputDriver driver;
};

} // namespace Corvane::Test
