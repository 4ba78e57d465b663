#include "Values.h"

#include "Commands.h"
#include "Output.h"

#include <algorithm>
#include <charconv>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <cstdint>
#include <limits>
#include <set>

namespace Corvanectl
{
namespace
{

using Corvane::ILifecycleManagement;
using Rect = Corvane::ISurfaceCompositing::Rect;

/// Reads a whole word as a decimal number of type T.
template <class T>
bool readWhole(std::string_view text, T& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(separator); end != text.npos; end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

bool isJson(const std::string& text)
{
    simdjson::dom::parser parser;
    return parser.parse(text).error() == simdjson::SUCCESS;
}

std::vector<std::string> listStates()
{
    return {ILifecycleManagement::STATE_UNINITIALIZED, ILifecycleManagement::STATE_LOADING,
            ILifecycleManagement::STATE_RUNNING,       ILifecycleManagement::STATE_SUSPENDING,
            ILifecycleManagement::STATE_SUSPENDED,     ILifecycleManagement::STATE_RESUMING,
            ILifecycleManagement::STATE_TERMINATING,   ILifecycleManagement::STATE_TERMINATED,
            ILifecycleManagement::STATE_ABORTED,       ILifecycleManagement::STATE_RUNAWAY};
}

} // namespace

std::string writeString(std::string_view text)
{
    Corvane::Serializer serializer;
    serializer.writeString("", text);
    return serializer.generate();
}

std::string writeObject(const std::string& key, const std::string& value)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeJson(key, value);
    serializer.endObject("");
    return serializer.generate();
}

std::string readSwitch(const std::string& text)
{
    if (text == "on" || text == "true")
        return "true";
    if (text == "off" || text == "false")
        return "false";
    throw UsageError("'" + text + "' is neither on nor off");
}

std::string readNumber(const std::string& text, unsigned int highest)
{
    unsigned int number = 0;
    if (!readWhole(text, number) || number > highest)
        throw UsageError("'" + text + "' is no number from 0 to " + std::to_string(highest));
    return std::to_string(number);
}

std::string readLocation(const std::string& text)
{
    const std::vector<std::string_view> parts = split(text, ',');
    int x = 0;
    int y = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    if (parts.size() != 4 || !readWhole(parts[0], x) || !readWhole(parts[1], y) || !readWhole(parts[2], width) ||
        !readWhole(parts[3], height))
        throw UsageError("'" + text + "' is no location of the form X,Y,W,H");
    return Rect(x, y, width, height).serialize();
}

std::string readState(const std::string& text)
{
    std::string wanted = text;
    std::transform(text.begin(), text.end(), wanted.begin(), [](unsigned char c) { return std::toupper(c); });
    const std::vector<std::string> states = listStates();
    if (std::find(states.begin(), states.end(), wanted) != states.end())
        return writeString(wanted);
    std::string problem = "'" + text + "' is no lifecycle state; there are";
    for (const std::string& state : states)
        problem += (state == states.front() ? " " : ", ") + state;
    throw UsageError(problem);
}

std::string readParameters(const std::vector<std::string>& words)
{
    Corvane::Serializer serializer;
    std::set<std::string> keys;
    serializer.beginObject("");
    for (const std::string& word : words) {
        const std::size_t end = word.find('=');
        if (end == word.npos || end == 0)
            throw UsageError("'" + word + "' is no parameter of the form KEY=VALUE");
        const std::string key = word.substr(0, end);
        const std::string value = word.substr(end + 1);
        if (!keys.insert(key).second)
            throw UsageError("the parameter '" + key + "' is given twice");
        serializer.writeJson(key, isJson(value) ? writeCompact(JsonText(value).root) : writeString(value));
    }
    serializer.endObject("");
    return serializer.generate();
}

std::string readParameterObject(const std::string& text)
{
    if (!isJson(text) || !JsonText(text).root.is_object())
        throw UsageError("the parameters are no JSON object: " + text);
    return writeCompact(JsonText(text).root);
}

std::string showSwitch(const std::string& value)
{
    return value == "true" ? "on" : value == "false" ? "off" : showPlain(value);
}

std::string showPlain(const std::string& value)
{
    return inWords(JsonText(value).root);
}

std::string showLocation(const std::string& value)
{
    Corvane::Deserializer deserializer(value);
    const Rect location(deserializer);
    return std::to_string(location.getX()) + "," + std::to_string(location.getY()) + "," +
           std::to_string(location.getWidth()) + "," + std::to_string(location.getHeight());
}

} // namespace Corvanectl
