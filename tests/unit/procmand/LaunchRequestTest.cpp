#include "launch/LaunchRequest.h"

#include <corvane/foundation/SerialError.h>
#include <ctime>
#include <gtest/gtest.h>

namespace Procmand
{
namespace
{

/// What this thread has taken of a processor, whatever else the machine does.
double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::string refusalOf(const std::string& text)
{
    try {
        LaunchRequest::read(text);
        return "it is not refused";
    } catch (const Corvane::SerialError& error) {
        return error.what();
    }
}

} // namespace

TEST(LaunchRequest, ReadsAsManyVariablesAsAMessageHasRoomForInNoTime)
{
    std::string text = R"({"program":"a","environment":{"N":"")";
    unsigned int count = 1;
    for (; text.size() < 865 * 1024; ++count)
        text += ",\"V" + std::to_string(count) + "\":\"\"";
    text += "}}";

    const double start = processorSeconds();
    const LaunchRequest request = LaunchRequest::read(text);
    EXPECT_LT(processorSeconds() - start, 2.0) << "all of the box waits meanwhile";
    EXPECT_EQ(request.environment.size(), count);
}

TEST(LaunchRequest, TakesTheLastOfSeveralMembersOfOneName)
{
    const LaunchRequest request =
        LaunchRequest::read(R"({"program":"a","arguments":["1"],"environment":{"A":"1"},)"
                            R"("program":"b","arguments":["2"],"environment":{"A":"2","A":"3"}})");

    EXPECT_EQ(request.program, "b");
    EXPECT_EQ(request.arguments, std::vector<std::string>{"2"});
    EXPECT_EQ(request.environment, (std::map<std::string, std::string>{{"A", "3"}}));
}

TEST(LaunchRequest, NamesTheVariableThatIsWrong)
{
    EXPECT_EQ(refusalOf(R"({"program":"a","environment":{"A":1}})"), "environment.A: expected a string, found 1");
    EXPECT_EQ(refusalOf(R"({"program":"a","environment":{"":"b"}})"),
              "environment: is no name of an environment variable");
    EXPECT_EQ(refusalOf(R"({"program":"a","environment":[]})"), "environment: expected an object, found array");
}

} // namespace Procmand
