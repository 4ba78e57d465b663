#include "Programs.h"

#include <ostream>
#include <sys/resource.h>

using namespace Corvane::Test;

namespace
{

/// A property of a hello-window, how it is at first, and a value to set.
struct Property {
    const char* command;
    const char* first;
    const char* newValue;
    const char* newValueAsJson;

    friend std::ostream& operator<<(std::ostream& stream, const Property& property)
    {
        return stream << property.newValue;
    }
};

class CorvanectlProperty : public WithHelloWindow, public testing::WithParamInterface<Property>
{
};

using CorvanectlFocus = WithHelloWindow;

int getNice(const ChildProcess& process)
{
    return getpriority(PRIO_PROCESS, static_cast<id_t>(process.getPid()));
}

} // namespace

TEST_P(CorvanectlProperty, IsShownAndSet)
{
    const Property& property = GetParam();
    EXPECT_EQ(corvanectl({property.command, "demo"}).output, property.first + std::string("\n"));

    const Outcome outcome = corvanectl({property.command, "demo", property.newValue});

    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(corvanectl({property.command, "demo"}).output, property.newValue + std::string("\n"));
    EXPECT_EQ(corvanectl({property.command, "demo", "--json"}).output, property.newValueAsJson + std::string("\n"));
}

TEST_P(CorvanectlProperty, IsSetByAScriptWhichGetsNull)
{
    EXPECT_EQ(corvanectl({"--json", GetParam().command, "demo", GetParam().newValue}).output, "null\n");
    EXPECT_EQ(corvanectl({GetParam().command, "demo"}).output, GetParam().newValue + std::string("\n"));
}

INSTANTIATE_TEST_SUITE_P(
    , CorvanectlProperty,
    testing::Values(Property{"state", "RUNNING", "SUSPENDED", "\"SUSPENDED\""}, Property{"focus", "off", "on", "true"},
                    Property{"visibility", "on", "off", "false"}, Property{"opacity", "255", "0", "0"},
                    Property{"z-order", "0", "4294967295", "4294967295"},
                    Property{"location", "0,0,1280,720", "-10,50,640,360",
                             "{\"x\":-10,\"y\":50,\"width\":640,\"height\":360}"}),
    [](const auto& info) { return std::string(info.param.command) == "z-order" ? "zOrder" : info.param.command; });

TEST_F(CorvanectlFocus, MovesTheProcessToTheNiceValueOfAFocusedWindow)
{
    corvanectl({"focus", "demo", "on"});

    EXPECT_EQ(getNice(hello.process), 5);
}

TEST_F(CorvanectlFocus, IsTakenAwayOrItIsSaidThatTheSystemRefuses)
{
    corvanectl({"focus", "demo", "true"});

    const Outcome outcome = corvanectl({"focus", "demo", "false"});

    if (mayLowerNice()) {
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(getNice(hello.process), 0);
    } else {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.error, "corvanectl: Generic failure\n");
        EXPECT_EQ(getNice(hello.process), 5);
    }
}

TEST_F(CorvanectlFocus, StateIsUnderstoodInSmallLetters)
{
    EXPECT_EQ(corvanectl({"state", "demo", "suspending"}).status, 0);
    EXPECT_EQ(corvanectl({"state", "demo"}).output, "SUSPENDING\n");
}
