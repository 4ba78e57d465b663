#include "Commands.h"
#include "Manager.h"
#include "Output.h"
#include "Server.h"
#include "Values.h"

#include <limits>
#include <memory>
#include <optional>

namespace Corvanectl
{
namespace
{

std::string readOpacity(const std::string& text)
{
    return readNumber(text, 255);
}

std::string readZOrder(const std::string& text)
{
    return readNumber(text, std::numeric_limits<unsigned int>::max());
}

/// What can be shown and set by one command.
struct Property {
    const char* name;
    const char* description;
    const char* getter;
    const char* setter;
    const char* key; ///< of the setter's parameter
    const char* form;
    const char* example;
    std::string (*read)(const std::string& text);
    std::string (*show)(const std::string& value);
};

const Property PROPERTIES[] = {
    {"state", "Shows or sets the state of an application (it may refuse silently)", "IApplication::getState",
     "IApplication::setState", "requestedState", "STATE", "RUNNING", readState, showPlain},
    {"focus", "Shows whether a window has the input focus, gives it or takes it away", "IWindow::isFocused",
     "IWindow::handleFocus", "obtained", "on|off", "on", readSwitch, showSwitch},
    {"visibility", "Shows or sets whether a window is visible", "IWindow::getVisibility", "IWindow::setVisibility",
     "visibility", "on|off", "off", readSwitch, showSwitch},
    {"opacity", "Shows or sets the opacity of a window", "IWindow::getOpacity", "IWindow::setOpacity", "opacity",
     "0-255", "128", readOpacity, showPlain},
    {"z-order", "Shows or sets the place of a window in the stack", "IWindow::getZOrder", "IWindow::setZOrder",
     "zorder", "NUMBER", "7", readZOrder, showPlain},
    {"location", "Shows or sets place and size of a window, in pixels", "IWindow::getLocation", "IWindow::setLocation",
     "location", "X,Y,W,H", "100,50,640,360", readLocation, showLocation},
};

bool isFocus(const Property& property)
{
    return property.getter == std::string("IWindow::isFocused");
}

void setProperty(const Property& property, const std::string& uid, const std::string& text, const Options& options)
{
    // One window at a time has the focus: who else has it, only the process manager knows.
    if (isFocus(property) && hasManager())
        return moveFocus(uid, readSwitch(text) == "true", options);
    const std::string parameters = writeObject(property.key, property.read(text));
    printResult(Server(uid, options).call(property.setter, parameters), options.json);
}

void showProperty(const Property& property, const std::string& uid, const Options& options)
{
    const std::string value = Server(uid, options).call(property.getter);
    options.json ? printJson(value) : printLine(property.show(value));
}

} // namespace

void addPropertyCommands(CLI::App& app, Options& options)
{
    for (const Property& property : PROPERTIES) {
        CLI::App& command = addCommand(app, options, property.name, property.description,
                                       std::string(property.name) + " demo " + property.example);
        const auto uid = addUid(command);
        const auto value = std::make_shared<std::optional<std::string>>();
        command.add_option("VALUE", *value, "The new value, " + std::string(property.form))->option_text(" ");
        command.callback([&property, uid, value, &options] {
            if (*value)
                setProperty(property, *uid, **value, options);
            else
                showProperty(property, *uid, options);
        });
    }
}

} // namespace Corvanectl
