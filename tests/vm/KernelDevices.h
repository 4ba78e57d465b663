#pragma once

#include <corvane/common/FileDescriptor.h>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// A device for input events that this process makes, through the module uinput. It is there once it is constructed,
/// and goes with this.
class UinputDevice
{
public:
    struct Event {
        unsigned int type;
        unsigned int code;
        int value;
    };

    /// @throws std::system_error  the kernel refuses it
    UinputDevice(const std::string& name, const std::set<unsigned int>& keys, const std::set<unsigned int>& axes);

    /// Reports one frame.
    void report(std::initializer_list<Event> events);
    void press(unsigned int code);
    void release(unsigned int code);

private:
    FileDescriptor device;
};

/// The remote control of the module rc-loopback: what it sends is received by its own receiver.
class LoopbackRemote
{
public:
    /// @return nothing when the module is not there
    static std::optional<LoopbackRemote> find();

    /// Has the receiver make a key of a scan code.
    void setKey(std::uint32_t scanCode, std::uint32_t key) const;
    /// Sends a scan code of the protocol NEC, as one press of a button does.
    void send(std::uint32_t scanCode) const;

private:
    LoopbackRemote(const std::string& folder, const std::string& sender, const std::string& receiver);

    FileDescriptor sender;
    FileDescriptor receiver;
};

/// A television and a box that one cable connects, both of the module vivid.
class CecCable
{
public:
    /// @return nothing when the module is not there
    static std::optional<CecCable> find();

    /// The television's remote control presses a key, in the words of CEC, or releases what it pressed.
    void press(std::uint8_t command);
    void release();

private:
    CecCable(FileDescriptor television, FileDescriptor box);
    void send(const std::vector<std::uint8_t>& message);

    FileDescriptor television;
    FileDescriptor box;
};

} // namespace Corvane::Test
