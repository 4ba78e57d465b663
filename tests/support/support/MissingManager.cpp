#include <support/MissingManager.h>

#include <gtest/gtest.h>
#include <support/CapturedOutput.h>

namespace Corvane::Test
{

namespace
{

bool isMissingManager(const std::string& text)
{
    const auto lines = parseDebugLines(text);
    return lines.size() == 1 && lines[0].level == 'I' && lines[0].module == "PlatformHelper" &&
           lines[0].message == "not registered with a process manager: cannot connect: No such file or directory";
}

} // namespace

std::string withoutMissingManager(const std::string& error)
{
    std::string rest;
    int found = 0;
    for (const std::string& line : splitLines(error)) {
        if (isMissingManager(line))
            ++found;
        else
            rest += line + "\n";
    }
    EXPECT_EQ(found, 1) << error;
    return rest;
}

} // namespace Corvane::Test
