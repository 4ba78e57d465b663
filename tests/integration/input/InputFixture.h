#pragma once

#include "MockDevice.h"

#include <corvane/input/MultiInputDriver.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <string>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/DriverThread.h>
#include <support/EventText.h>
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
