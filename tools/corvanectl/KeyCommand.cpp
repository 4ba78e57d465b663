#include "Commands.h"
#include "Output.h"
#include "Server.h"
#include "Values.h"

#include <corvane/input/KeyNames.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <limits>
#include <memory>
#include <vector>

namespace Corvanectl
{
namespace
{

using Corvane::IWindowEvent;
using EventPointer = std::unique_ptr<const IWindowEvent::InputEvent>;

struct Key {
    std::string name;
    std::string text;
    bool pressOnly = false;
    bool releaseOnly = false;
};

IWindowEvent::KeyEvent::Code readKey(const std::string& word)
{
    if (const auto code = Corvane::findKeyCode(word))
        return *code;
    if (word.find_first_not_of("0123456789") == word.npos)
        return static_cast<IWindowEvent::KeyEvent::Code>(
            std::stoul(readNumber(word, std::numeric_limits<unsigned int>::max())));
    throw UsageError("'" + word + "' is no key: give a name of Linux's headers such as KEY_OK, or its number");
}

/// What a keyboard would give for this character.
EventPointer makeEvent(char character, bool pressed)
{
    if (character >= ' ' && character <= '~')
        return std::make_unique<IWindowEvent::AsciiEvent>(static_cast<unsigned char>(character), pressed);
    if (character == '\n' || character == '\t')
        return std::make_unique<IWindowEvent::KeyEvent>(readKey(character == '\n' ? "KEY_ENTER" : "KEY_TAB"), pressed);
    throw UsageError("only ASCII characters, line feeds and tabs can be typed");
}

std::vector<EventPointer> makeEvents(const std::string& text)
{
    if (text.empty())
        throw UsageError("there is nothing to type");
    std::vector<EventPointer> events;
    for (const char character : text)
        for (const bool pressed : {true, false})
            events.push_back(makeEvent(character, pressed));
    return events;
}

/// @return whether the window used it
bool send(Server& server, const IWindowEvent::InputEvent& event)
{
    return server.call("IWindow::handleEvent", writeObject("event", event.serialize())) == "true";
}

void show(const std::string& what, const std::string& done, bool isUsed, const Options& options)
{
    if (options.json)
        return printJson(writeObject(done, isUsed ? "true" : "false"));
    printLine(what + " " + done + ": " + (isUsed ? "used" : "not used"));
}

void pressKey(const std::string& uid, const Key& key, const Options& options)
{
    const IWindowEvent::KeyEvent::Code code = readKey(key.name);
    Server server(uid, options);
    for (const bool pressed : {true, false}) {
        if (pressed ? key.releaseOnly : key.pressOnly)
            continue;
        const bool isUsed = send(server, IWindowEvent::KeyEvent(code, pressed));
        show("key " + key.name, pressed ? "pressed" : "released", isUsed, options);
    }
}

void typeText(const std::string& uid, const std::string& text, const Options& options)
{
    const std::vector<EventPointer> events = makeEvents(text);
    Server server(uid, options);
    bool isUsed = true;
    for (const EventPointer& event : events)
        isUsed = send(server, *event) && isUsed;
    show("text", "typed", isUsed, options);
}

} // namespace

void addKeyCommand(CLI::App& app, Options& options)
{
    CLI::App& command = addCommand(app, options, "key", "Presses and releases a key in a window, or types a text",
                                   "key demo KEY_OK\n  corvanectl key demo --type \"some text\"");
    const auto key = std::make_shared<Key>();
    const auto uid = addUid(command);
    CLI::Option* const name =
        command.add_option("KEY", key->name, "Name of the key in Linux's headers, such as KEY_OK, or its number")
            ->option_text(" ");
    CLI::Option* const press = command.add_flag("--press", key->pressOnly, "Only press it");
    CLI::Option* const release = command.add_flag("--release", key->releaseOnly, "Only release it")->excludes(press);
    CLI::Option* const type =
        command.add_option("--type", key->text, "Types the characters of this text instead, as a keyboard does")
            ->option_text("TEXT")
            ->excludes(name)
            ->excludes(press)
            ->excludes(release);
    command.callback([uid, key, name, type, &options] {
        if (*type)
            return typeText(*uid, key->text, options);
        if (!*name)
            throw UsageError("no key is given (corvanectl key --help tells more)");
        pressKey(*uid, *key, options);
    });
}

} // namespace Corvanectl
