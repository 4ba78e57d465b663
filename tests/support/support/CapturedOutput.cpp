#include <support/CapturedOutput.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <support/MemoryFile.h>

namespace Corvane::Test
{

namespace
{

int orThrow(int result, const char* operation)
{
    if (result == -1)
        throw std::runtime_error(std::string(operation) + " failed");
    return result;
}

/// "TIME PROCESS[PID] LEVEL MODULE COMPONENT:LINE MESSAGE"
std::optional<DebugLine> parseDebugLine(const std::string& line)
{
    constexpr std::string_view TIME = "2026-11-21T09:00:00.123Z ";
    if (line.size() < TIME.size() || line[10] != TIME[10] || line.compare(TIME.size() - 2, 2, "Z ") != 0)
        return {};
    const std::size_t open = line.find('[', TIME.size());
    const std::size_t close = line.find("] ", open);
    if (close == std::string::npos)
        return {};
    DebugLine result{
        line.substr(TIME.size(), open - TIME.size()), std::atoi(line.c_str() + open + 1), ' ', "", "", 0, ""};
    std::istringstream rest(line.substr(close + 2));
    std::string place;
    rest >> result.level >> result.module >> place;
    const std::size_t colon = place.rfind(':');
    if (!rest || rest.get() != ' ' || colon == std::string::npos)
        return {};
    result.component = place.substr(0, colon);
    result.line = std::atoi(place.c_str() + colon + 1);
    std::getline(rest, result.message);
    return result;
}

} // namespace

CapturedOutput::CapturedOutput(int descriptor)
    : descriptor(descriptor),
      original(orThrow(fcntl(descriptor, F_DUPFD_CLOEXEC, 3), "dup")),
      file(createMemoryFile("captured"))
{
    std::fflush(nullptr);
    orThrow(dup2(file, descriptor), "dup2");
}

CapturedOutput::~CapturedOutput()
{
    std::fflush(nullptr);
    dup2(original, descriptor);
    close(original);
    close(file);
}

std::string CapturedOutput::getText() const
{
    std::fflush(nullptr);
    return readWholeFile(file);
}

std::vector<std::string> CapturedOutput::getLines() const
{
    return splitLines(getText());
}

std::vector<DebugLine> CapturedOutput::getDebugLines() const
{
    return parseDebugLines(getText());
}

std::vector<std::string> CapturedOutput::getMessages() const
{
    std::vector<std::string> messages;
    for (const DebugLine& line : getDebugLines())
        messages.push_back(line.message);
    return messages;
}

std::string readWholeFile(int descriptor)
{
    std::string text;
    char chunk[4096];
    ssize_t count;
    while ((count = pread(descriptor, chunk, sizeof chunk, static_cast<off_t>(text.size()))) > 0)
        text.append(chunk, static_cast<std::size_t>(count));
    return text;
}

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<DebugLine> parseDebugLines(const std::string& text)
{
    std::vector<DebugLine> result;
    for (const std::string& line : splitLines(text))
        if (const auto parsed = parseDebugLine(line))
            result.push_back(*parsed);
    return result;
}

} // namespace Corvane::Test
