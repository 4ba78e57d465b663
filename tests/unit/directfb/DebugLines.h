#pragma once

#include <gtest/gtest.h>
#include <support/CapturedOutput.h>

namespace Corvane::Test
{

/// A report as it has to be, without the final line feed of its message.
struct Report {
    int line;
    std::string message;
};

/// The debug lines must be exactly these reports, at level 1 and under one tag.
inline void expectReports(const CapturedOutput& output, const std::string& tag, const std::vector<Report>& expected)
{
    const std::vector<DebugLine> lines = output.getDebugLines();
    ASSERT_EQ(lines.size(), expected.size()) << output.getText();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].level, 'E');
        EXPECT_EQ(lines[i].module, tag);
        EXPECT_EQ(lines[i].component, tag);
        EXPECT_EQ(lines[i].line, expected[i].line);
        EXPECT_EQ(lines[i].message, expected[i].message);
    }
}

} // namespace Corvane::Test
