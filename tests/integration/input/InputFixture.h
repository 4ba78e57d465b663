#pragma once

#include "MockDevice.h"

#include <corvane/input/MultiInputDriver.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <string>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/DriverThread.h>
#include <support/InputRecorder.h>

namespace Corvane::Test
{

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
