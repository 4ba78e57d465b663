#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Corvane
{

/// An input device, and what an input driver in a process with this environment takes it for.
struct InputDeviceDescription {
    std::string path{}; ///< of its node
    std::string name{};
    std::string bus{}; ///< "usb"; hexadecimal for one without a name
    unsigned int vendor = 0;
    unsigned int product = 0;
    std::string keysClass{}; ///< "mouse", "keyboard", "remote" or "none"; empty when the device cannot be asked
    std::string pointerClass{};
    unsigned int sessionIndex = 0;
    std::string rule{}; ///< the title of the rule that the map has for it; empty for none
    bool isIgnored = false;
    std::string problem{}; ///< why it cannot be opened; empty when it can
};

/// What a device has reported in one frame about keys, and what becomes of it.
struct InputObservation {
    struct Key {
        IWindowEvent::KeyEvent::Code code = 0; ///< the kernel's, before any map
        int value = 0;                         ///< 0: released, 1: pressed, 2: repeats
    };
    std::string path{}; ///< of the device's node
    std::vector<unsigned int> scans{};
    std::vector<Key> keys{};
    std::vector<std::shared_ptr<const IWindowEvent::InputEvent>> events{};
};

/// Looks for the input devices of this machine, and opens each for a moment unless it is ignored.
/// Thread-safe. Does not wait for a device.
CORVANE_EXPORT std::vector<InputDeviceDescription> describeInputDevices();

/// Listens to the keys of the devices that there are now, all classes, beside whoever else does: no device is grabbed.
/// @param isReady  called once, when everything that is pressed from now on is observed
/// @param sink     called for each frame with a key or a scan code, on the calling thread
/// @param stop     a descriptor that becomes readable when this is to return
/// @throws std::runtime_error  there is no device that can be opened; the text says which there are, and why not
/// Blocks until it is stopped or the last device is gone.
CORVANE_EXPORT void observeInputDevices(const std::function<void()>& isReady,
                                        const std::function<void(const InputObservation&)>& sink, int stop);

} // namespace Corvane
