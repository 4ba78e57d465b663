#pragma once

#include <cstdint>
#include <linux/input.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

using UMockdevIoctlBase = struct _UMockdevIoctlBase;
using UMockdevTestbed = struct _UMockdevTestbed;

namespace Corvane::Test
{

/// What a mock device is, and what can happen on it.
struct DeviceSpecification {
    std::string name;
    std::string path; ///< of the hardware it belongs to, below /sys, without its number
    std::uint16_t bus = BUS_USB;
    std::map<std::string, std::string> properties;          ///< what udev's rules say of it
    std::map<unsigned int, std::set<unsigned int>> codes{}; ///< by type
    std::map<unsigned int, input_absinfo> axes{};
    std::set<unsigned int> traits{}; ///< what the kernel says of it: INPUT_PROP_
    std::set<unsigned int> ledsOn{};
    std::set<unsigned int> keysDown{}; ///< when it is plugged in
    bool isReceiver = false;           ///< of a remote control: its hardware is in the subsystem "rc"
};

/// The kinds of device that the tests use.
DeviceSpecification mouse();
DeviceSpecification keyboard();
DeviceSpecification tablet();                ///< an absolute pointer with a wheel; its axes go from 0 to 32767
DeviceSpecification keyboardWithTrackBall(); ///< both on one node
DeviceSpecification infrared();
DeviceSpecification knob(); ///< of a front panel
DeviceSpecification onSeat(DeviceSpecification specification, const std::string& seat);

/// A machine without any device, into which the whole process looks from now on instead of the real one.
class MockMachine
{
public:
    MockMachine();
    ~MockMachine();
    MockMachine(const MockMachine&) = delete;
    MockMachine& operator=(const MockMachine&) = delete;

    UMockdevTestbed* get() const { return testbed; }
    /// @param description  in the words of "udevadm info --export"
    void add(const std::string& description);
    /// @return where a file of the mock machine really is
    std::string locate(const std::string& path) const;

private:
    UMockdevTestbed* const testbed;
};

/// Something that a device reports.
struct Report {
    unsigned int type;
    unsigned int code;
    int value;
};

/// How the kernel repeats the keys of a device, in milliseconds.
struct Repeat {
    unsigned int delay;
    unsigned int period;
    bool operator==(const Repeat&) const = default;
};

/// A device for input events that the real libraries take for one of the kernel's. It is there once it is constructed.
///
///     MockDevice remote(machine, infrared());
///     remote.report({{EV_KEY, KEY_OK, 1}});
class MockDevice
{
public:
    MockDevice(MockMachine& machine, DeviceSpecification specification);
    ~MockDevice();
    MockDevice(const MockDevice&) = delete;
    MockDevice& operator=(const MockDevice&) = delete;

    /// Reports one frame. Blocks while the device's buffer is full.
    void report(const std::vector<Report>& reports);
    void press(unsigned int code) { report({{EV_KEY, code, 1}}); }
    void release(unsigned int code) { report({{EV_KEY, code, 0}}); }
    /// Reports without the end of a frame.
    void reportOpenFrame(const std::vector<Report>& reports);
    /// Loses events: a key goes up or down, and all that is reported is that something was lost.
    void lose(const std::vector<Report>& lost);

    /// Pulls the plug: the device is gone, and the system tells so. Waits until this process reads it no more, as it
    /// must since the device has hung up.
    void unplug();
    /// The device hangs up, and nobody tells.
    void hangUp();
    /// The next read fails.
    void fail();
    /// Sends a message about the device as it is now.
    void announce(const std::string& action, const std::map<std::string, std::string>& newProperties);

    const std::string& getNode() const { return node; }
    /// Whether this process reads it.
    bool isOpen() const;
    /// Whether there is something that nobody has read.
    bool hasUnread() const;
    /// What the kernel was told.
    Repeat getRepeat() const;

private:
    class Answers;

    void connect();
    std::string describe() const;

    MockMachine& machine;
    const DeviceSpecification specification;
    const std::shared_ptr<Answers> answers; ///< also of the thread that gives them, which may be at it
    std::string hardware;                   ///< below /sys, as the next
    std::string folder;
    std::string node;
    UMockdevIoctlBase* handler = nullptr;
    int descriptor = -1; ///< the end that the hardware writes to
    struct stat identity {
    }; ///< of the node, as a file
};

} // namespace Corvane::Test
