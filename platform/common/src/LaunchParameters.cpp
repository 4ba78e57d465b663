#include <corvane/interfaces/IApplicationManager.h>
#include <corvane/interfaces/IWindowManager.h>

#include "OptionalMember.h"

#include <charconv>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <optional>
#include <string_view>

namespace Corvane
{

namespace
{

constexpr char MODULE[] = "LaunchParameters";
constexpr char COMPONENT[] = "LaunchParameters";

using CreationSettings = ISurfaceManagement::CreationSettings;

/// A program's arguments as its own constructor got them.
struct CommandLine {
    int argc;
    char** argv;

    /// @param name  with its dashes
    /// @return what follows the `=` of the last option of that name
    std::optional<std::string_view> find(std::string_view name) const
    {
        std::optional<std::string_view> value;
        for (int i = 1; i < argc && argv[i] != nullptr; ++i) {
            const std::string_view argument = argv[i];
            if (argument == "--")
                break;
            if (argument.size() > name.size() && argument.starts_with(name) && argument[name.size()] == '=')
                value = argument.substr(name.size() + 1);
        }
        return value;
    }

    std::string getText(std::string_view name) const { return std::string(find(name).value_or("")); }
};

template <class T>
bool takeNumber(std::string_view& text, T& number)
{
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return false;
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    return true;
}

bool takeComma(std::string_view& text)
{
    if (!text.starts_with(','))
        return false;
    text.remove_prefix(1);
    return true;
}

std::optional<unsigned int> parseUnsigned(std::string_view text)
{
    unsigned int number = 0;
    return takeNumber(text, number) && text.empty() ? std::optional(number) : std::nullopt;
}

std::optional<unsigned int> parseOpacity(std::string_view text)
{
    const auto number = parseUnsigned(text);
    return number && *number <= 255 ? number : std::nullopt;
}

std::optional<bool> parseBoolean(std::string_view text)
{
    if (text == "true" || text == "false")
        return text == "true";
    return std::nullopt;
}

std::optional<ISurfaceCompositing::Rect> parseRect(std::string_view text)
{
    int x = 0;
    int y = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    if (takeNumber(text, x) && takeComma(text) && takeNumber(text, y) && takeComma(text) && takeNumber(text, width) &&
        takeComma(text) && takeNumber(text, height) && text.empty())
        return ISurfaceCompositing::Rect(x, y, width, height);
    return std::nullopt;
}

/// The value of an option, or `otherwise` where the option is not given.
/// @throws Exception  code 1 when `parse` cannot make anything of it
template <class T>
T readOption(const CommandLine& commandLine, const char* name, std::optional<T> (*parse)(std::string_view),
             const char* expected, const T& otherwise)
{
    const auto text = commandLine.find(name);
    if (!text)
        return otherwise;
    if (const auto value = parse(*text))
        return *value;
    corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "%s: expected %s, found \"%.*s\"\n", name, expected,
                      static_cast<int>(text->size()), text->data());
    throw Exception(RETURN_INVALID_PARAMETER);
}

CreationSettings readCompositingParameters(const CommandLine& line)
{
    const char* const NUMBER = "a number from 0 to 4294967295";
    const CreationSettings defaults;
    const auto sessionIndex = readOption(line, "--session-index", parseUnsigned, NUMBER, defaults.getSessionIndex());
    const auto location = readOption(line, "--location", parseRect, "X,Y,W,H in pixels", defaults.getLocation());
    const auto zOrder = readOption(line, "--z-order", parseUnsigned, NUMBER, defaults.getZOrder());
    const auto opacity = readOption(line, "--opacity", parseOpacity, "a number from 0 to 255", defaults.getOpacity());
    const auto visibility = readOption(line, "--visibility", parseBoolean, "true or false", defaults.getVisibility());
    return {sessionIndex, location, zOrder, opacity, visibility};
}

} // namespace

IApplicationManager::LaunchParameters::LaunchParameters(Deserializer& deserializer)
    : applicationType(deserializeOptional("applicationType", std::string(), deserializer)),
      applicationParameters(deserializeOptional("applicationParameters", std::string(), deserializer)),
      authorizationToken(deserializeOptional("authorizationToken", std::string(), deserializer))
{
}

IApplicationManager::LaunchParameters::LaunchParameters(int argc, char** argv)
    : applicationType(CommandLine{argc, argv}.getText("--application-type")),
      applicationParameters(CommandLine{argc, argv}.getText("--application-parameters")),
      authorizationToken(CommandLine{argc, argv}.getText("--authorization-token"))
{
}

IApplicationManager::LaunchParameters::~LaunchParameters() = default;

std::string IApplicationManager::LaunchParameters::getObjectType() const
{
    return "IApplicationManager::LaunchParameters";
}

std::unique_ptr<SerialObject> IApplicationManager::LaunchParameters::clone() const
{
    return std::make_unique<LaunchParameters>(*this);
}

void IApplicationManager::LaunchParameters::serialize(Serializer& serializer) const
{
    Corvane::serialize("applicationType", applicationType, serializer);
    Corvane::serialize("applicationParameters", applicationParameters, serializer);
    Corvane::serialize("authorizationToken", authorizationToken, serializer);
}

IWindowManager::LaunchParameters::LaunchParameters(Deserializer& deserializer)
    : IApplicationManager::LaunchParameters(deserializer),
      compositingParameters(deserializeOptional("compositingParameters", CreationSettings(), deserializer))
{
}

IWindowManager::LaunchParameters::LaunchParameters(int argc, char** argv)
    : IApplicationManager::LaunchParameters(argc, argv),
      compositingParameters(readCompositingParameters(CommandLine{argc, argv}))
{
}

IWindowManager::LaunchParameters::~LaunchParameters() = default;

std::string IWindowManager::LaunchParameters::getObjectType() const
{
    return "IWindowManager::LaunchParameters";
}

std::unique_ptr<SerialObject> IWindowManager::LaunchParameters::clone() const
{
    return std::make_unique<LaunchParameters>(*this);
}

void IWindowManager::LaunchParameters::serialize(Serializer& serializer) const
{
    IApplicationManager::LaunchParameters::serialize(serializer);
    compositingParameters.serialize("compositingParameters", serializer);
}

} // namespace Corvane
