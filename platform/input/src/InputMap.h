#pragma once

#include "DeviceKind.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Corvane
{

class Deserializer;

/// What a device calls itself.
struct DeviceIdentity {
    std::string name;
    unsigned int bus = 0;
    unsigned int vendor = 0;
    unsigned int product = 0;
};

/// What the map says of some devices.
struct DeviceRule {
    std::string title; ///< in the map

    std::optional<std::string> name; ///< of the devices that it is about; * and ? as in names of files
    std::optional<unsigned int> bus;
    std::optional<unsigned int> vendor;
    std::optional<unsigned int> product;

    bool isIgnored = false;
    std::optional<InputClass> keys;
    std::optional<InputClass> pointer;
    std::optional<unsigned int> session;
    std::map<unsigned int, unsigned int> scans; ///< codes by scan code; KEY_RESERVED for a key that gives nothing
    std::map<unsigned int, unsigned int> codes; ///< codes by code

    bool operator==(const DeviceRule&) const = default;
    bool isAbout(const DeviceIdentity& device) const;
    /// @param own  what the device is by itself; nothing when that is not known yet
    /// @return what it is taken for; nothing when that depends on what it is by itself
    std::optional<DeviceKind> decide(const std::optional<DeviceKind>& own) const;
};

/// What people want devices to be, and keys to mean: rules, of which the first that is about a device counts.
class InputMap
{
public:
    InputMap() = default;
    /// @param text  JSON, as docs/input.md describes it
    /// @throws SerialError  it is none, or says something that means nothing
    explicit InputMap(const std::string& text);

    bool isEmpty() const { return rules.empty(); }
    /// @return null when no rule is about the device
    std::shared_ptr<const DeviceRule> find(const DeviceIdentity& device) const;

private:
    std::vector<std::shared_ptr<const DeviceRule>> rules;
};

/// @return "mouse", "keyboard", "remote" or "none"
const char* nameOf(InputClass which);

/// @return as the map has it: a name, or hexadecimal digits
std::string nameOfBus(unsigned int bus);

} // namespace Corvane
