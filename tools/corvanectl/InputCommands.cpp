#include "Commands.h"
#include "EndSignals.h"
#include "Output.h"

#include <charconv>
#include <corvane/foundation/Serializer.h>
#include <corvane/input/InputInspector.h>
#include <corvane/input/KeyNames.h>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

/// The commands that look at the input devices of this machine. They need no server.
namespace Corvanectl
{
namespace
{

using Corvane::InputDeviceDescription;
using Corvane::InputObservation;
using Corvane::IWindowEvent;

std::string writeHexadecimal(unsigned int number)
{
    char digits[8];
    return std::string(digits, std::to_chars(std::begin(digits), std::end(digits), number, 16).ptr);
}

std::string writeFourDigits(unsigned int number)
{
    const std::string digits = writeHexadecimal(number);
    return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

std::string describeState(const InputDeviceDescription& device)
{
    if (device.isIgnored)
        return "ignored";
    return device.problem.empty() ? "ok" : "cannot be opened: " + device.problem;
}

std::string writeDevice(const InputDeviceDescription& device)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("device", device.path);
    serializer.writeString("name", device.name);
    serializer.writeString("bus", device.bus);
    serializer.writeString("vendor", writeFourDigits(device.vendor));
    serializer.writeString("product", writeFourDigits(device.product));
    serializer.writeString("keys", device.keysClass);
    serializer.writeString("pointer", device.pointerClass);
    serializer.writeUnsigned("session", device.sessionIndex);
    serializer.writeString("rule", device.rule);
    serializer.writeString("state", describeState(device));
    serializer.endObject("");
    return serializer.generate();
}

void listDevices(const Options& options)
{
    std::vector<std::vector<std::string>> rows{
        {"DEVICE", "NAME", "BUS", "VENDOR:PRODUCT", "KEYS", "POINTER", "SESSION", "RULE", "STATE"}};
    for (const InputDeviceDescription& device : Corvane::describeInputDevices()) {
        if (options.json)
            printLine(writeDevice(device));
        const auto orUnknown = [](const std::string& word) { return word.empty() ? "?" : word; };
        rows.push_back({device.path, makePrintable(device.name), device.bus,
                        writeFourDigits(device.vendor) + ":" + writeFourDigits(device.product),
                        orUnknown(device.keysClass), orUnknown(device.pointerClass),
                        std::to_string(device.sessionIndex), device.rule.empty() ? "-" : makePrintable(device.rule),
                        describeState(device)});
    }
    if (!options.json)
        printTable(rows);
}

std::string nameKey(IWindowEvent::KeyEvent::Code code)
{
    const std::string name = Corvane::findKeyName(code);
    return name.empty() ? std::to_string(code) : name;
}

std::string describeInput(const InputObservation& observation)
{
    std::string text;
    for (const unsigned int scan : observation.scans)
        text += (text.empty() ? "scan " : ", scan ") + writeHexadecimal(scan);
    for (const InputObservation::Key& key : observation.keys) {
        const char* const state = key.value == 0 ? " released" : key.value == 1 ? " pressed" : " repeats";
        text += (text.empty() ? "" : ", ") + nameKey(key.code) + state;
    }
    return text;
}

const char* describePress(bool isPressed)
{
    return isPressed ? " pressed" : " released";
}

/// What the events are, one after the other. The bytes of one character are shown together.
std::string describeEvents(const InputObservation& observation)
{
    std::string line;
    std::string text; // of characters whose last byte has not come yet
    bool isTextPressed = false;
    const auto add = [&line](const std::string& word) { line += (line.empty() ? "" : ", ") + word; };
    const auto endText = [&] {
        if (!text.empty())
            add("'" + std::exchange(text, {}) + "'" + describePress(isTextPressed));
    };
    for (const auto& event : observation.events) {
        const auto* const ascii = dynamic_cast<const IWindowEvent::AsciiEvent*>(event.get());
        const auto* const key = dynamic_cast<const IWindowEvent::KeyEvent*>(event.get());
        if (ascii == nullptr || ascii->getPressed() != isTextPressed)
            endText();
        if (ascii != nullptr) {
            text += static_cast<char>(ascii->getAsciiCode());
            isTextPressed = ascii->getPressed();
        } else {
            add(key != nullptr ? nameKey(key->getKeyCode()) + describePress(key->getPressed()) : "mouse");
        }
    }
    endText();
    return line.empty() ? "nothing" : line;
}

std::string writeObservation(const InputObservation& observation)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("device", observation.path);
    serializer.beginArray("scans");
    for (const unsigned int scan : observation.scans)
        serializer.writeString("", writeHexadecimal(scan));
    serializer.endArray("scans");
    serializer.beginArray("keys");
    for (const InputObservation::Key& key : observation.keys) {
        serializer.beginObject("");
        serializer.writeString("key", nameKey(key.code));
        serializer.writeInteger("value", key.value);
        serializer.endObject("");
    }
    serializer.endArray("keys");
    serializer.beginArray("events");
    for (const auto& event : observation.events)
        serializer.writeJson("", event->serialize());
    serializer.endArray("events");
    serializer.endObject("");
    return serializer.generate();
}

void mapKeys(unsigned long limit, const Options& options)
{
    const EndSignals endSignals;
    unsigned long count = 0;
    Corvane::observeInputDevices([] { std::cerr << "corvanectl: press keys; Ctrl+C ends" << std::endl; },
                                 [&](const InputObservation& observation) {
                                     if (limit > 0 && count == limit)
                                         return;
                                     printLine(options.json ? writeObservation(observation)
                                                            : observation.path + "  " + describeInput(observation) +
                                                                  "  ->  " + describeEvents(observation));
                                     if (!std::cout.flush() || ++count == limit)
                                         EndSignals::raise();
                                 },
                                 endSignals.getDescriptor());
}

} // namespace

void addInputCommands(CLI::App& app, Options& options)
{
    CLI::App& group = addCommand(app, options, "input", "Shows the input devices of this machine, or their keys",
                                 "input list\n  corvanectl input map");
    group.require_subcommand(0, 1);
    group.callback([&group] {
        if (group.get_subcommands().empty())
            throw UsageError("input: list or map is missing (corvanectl input --help tells more)");
    });

    CLI::App& list =
        addCommand(group, options, "list", "Lists the devices, and what an application takes them for", "input list");
    list.callback([&options] { listDevices(options); });

    CLI::App& map =
        addCommand(group, options, "map", "Shows what becomes of each key that is pressed, until it is interrupted",
                   "input map --count 1");
    const auto limit = std::make_shared<unsigned long>(0);
    map.add_option("--count", *limit, "End after so many lines")
        ->check(CLI::Range(1UL, 4294967295UL))
        ->option_text("N");
    map.callback([limit, &options] { mapKeys(*limit, options); });
}

} // namespace Corvanectl
