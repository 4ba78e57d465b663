#include <support/CapturedOutput.h>

#include <cstdio>
#include <fcntl.h>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>

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

} // namespace

CapturedOutput::CapturedOutput(int descriptor)
    : descriptor(descriptor),
      original(orThrow(fcntl(descriptor, F_DUPFD_CLOEXEC, 3), "dup")),
      file(orThrow(memfd_create("captured", MFD_CLOEXEC), "memfd_create"))
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
    static const std::regex HEAD(
        R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (.+?)\[(\d+)\] ([EWIN]) (\S+) (\S+):(\d+) )");
    std::vector<DebugLine> result;
    for (const std::string& line : splitLines(text)) {
        std::smatch part;
        if (std::regex_search(line, part, HEAD, std::regex_constants::match_continuous))
            result.push_back(
                {part[1], std::stoi(part[2]), part[3].str()[0], part[4], part[5], std::stoi(part[6]), part.suffix()});
    }
    return result;
}

} // namespace Corvane::Test
