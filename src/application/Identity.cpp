#include <corvane/Application.h>

#include <charconv>
#include <corvane/Foundation.h>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr char MODULE[] = "Application";
constexpr char COMPONENT[] = "Application";
constexpr char UNKNOWN[] = "Unknown";

} // namespace

IApplicationManager::LaunchParameters Application::findApplicationLaunchParameters(int argc, char** argv)
{
    if (argc == 0 || argv == nullptr) {
        const Exception failure(RETURN_INVALID_PARAMETER);
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "%s(): throwing exception: %s\n", __func__,
                          failure.what());
        throw failure;
    }
    const char* const parameters = std::getenv("CORVANE_APP_PARAMETERS");
    if (parameters == nullptr)
        return {argc, argv};
    Deserializer deserializer{std::string(parameters)};
    return IApplicationManager::LaunchParameters(deserializer);
}

bool Application::needsPlatformHelper() const
{
    const std::string_view program = argv[0];
    for (const char* marker : {"QAX", "ORU", "WEB"})
        if (program.find(marker) != std::string_view::npos)
            return false;
    return true;
}

std::string Application::getUid()
{
    std::string buffer;
    return findUid(buffer);
}

const std::string& Application::findUid(std::string& buffer) const
{
    if (!launchParameters.getAuthorizationToken().empty())
        return launchParameters.getAuthorizationToken();
    char digits[12];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, getpid());
    return buffer.assign(digits, end);
}

std::string Application::getHostName()
{
    const char* const name = std::getenv("CORVANE_APP_HOSTNAME");
    return name != nullptr ? name : UNKNOWN;
}

std::string Application::getProcessName()
{
    return argc > 0 && argv != nullptr ? argv[0] : UNKNOWN;
}

} // namespace Corvane
