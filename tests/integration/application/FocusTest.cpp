#include "DrivenProcess.h"

#include <sys/resource.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

using WindowFocus = DrivenProcess;

int niceOf(pid_t pid)
{
    return getpriority(PRIO_PROCESS, static_cast<id_t>(pid));
}

std::string focusChange(const std::string& values)
{
    return "IWindow::onFocusChange {\"uid\":\"token-0123456789abcdef\"," + values + "}";
}

TEST_F(WindowFocus, IsGivenAndTakenAwayWithTheNiceValueAndAnnounced)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "lowering the nice value again needs root";
    Announcements announcements(client);
    EXPECT_EQ(call("IWindow::isFocused"), false);
    EXPECT_EQ(call("IWindow::handleFocus", R"({"obtained":true})"), nullptr);
    EXPECT_EQ(announcements.next(), focusChange(R"("oldIsFocused":false,"newIsFocused":true)"));
    EXPECT_EQ(niceOf(process.getPid()), 5);
    EXPECT_EQ(call("IWindow::isFocused"), true);
    EXPECT_EQ(call("IWindow::handleFocus", R"({"obtained":false})"), nullptr);
    EXPECT_EQ(announcements.next(), focusChange(R"("oldIsFocused":true,"newIsFocused":false)"));
    EXPECT_EQ(niceOf(process.getPid()), 0);
}

} // namespace

} // namespace Corvane::Test
