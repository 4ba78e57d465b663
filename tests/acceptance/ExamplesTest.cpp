#include "Programs.h"

#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <sstream>
#include <support/MissingManager.h>

using namespace Corvane::Test;
using testing::HasSubstr;

namespace
{

std::string readFile(const std::string& path)
{
    std::ifstream file(SOURCE_FOLDER "/" + path);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Examples : testing::Test {
    TemporaryRuntime runtime;
};

} // namespace

TEST(Readme, ShowsHelloWindowFirstAndAsItIs)
{
    const std::string readme = readFile("README.md");
    const std::string fence = "```cpp\n";
    const std::size_t begin = readme.find(fence) + fence.size();

    EXPECT_EQ(readme.substr(begin, readme.find("```", begin) - begin), readFile("examples/hello-window/main.cpp"));
}

TEST(HelloWindowExample, HasAtMostTwentyFiveLinesOfCode)
{
    std::istringstream source(readFile("examples/hello-window/main.cpp"));
    int lines = 0;
    for (std::string line; std::getline(source, line);)
        lines += line.empty() ? 0 : 1;

    EXPECT_LE(lines, 25);
}

TEST_F(Examples, HelloWindowEndsCleanlyAfterItRanAway)
{
    HelloWindow hello;

    EXPECT_EQ(corvanectl({"state", "demo", "RUNAWAY"}).status, 0);
    EXPECT_EQ(hello.process.wait().status, 0) << hello.process.getError();
}

TEST_F(Examples, HelloWindowRefusesToRunWithoutAnApplicationType)
{
    ChildProcess hello({HELLO_WINDOW}, leavingSignalsToTheProgram());

    EXPECT_EQ(hello.wait().signal, SIGABRT);
    EXPECT_THAT(hello.getError(), HasSubstr(std::string(HELLO_WINDOW) + " is missing launchParameters"));
}

TEST_F(Examples, PlainApplicationTellsOfItsLifeAndEndsByItself)
{
    ChildProcess plain({PLAIN_APPLICATION, "--authorization-token=plain", "--keep-alives=1"});

    EXPECT_EQ(plain.wait().status, 0);
    EXPECT_EQ(plain.getOutput(), "plain went from UNINITIALIZED to LOADING\n"
                                 "plain went from LOADING to RUNNING\n"
                                 "plain is alive, RUNNING\n"
                                 "plain went from RUNNING to TERMINATING\n"
                                 "plain went from TERMINATING to TERMINATED\n");
    EXPECT_EQ(withoutMissingManager(plain.getError()), "");
}

TEST_F(Examples, PlainApplicationHasNoControlServer)
{
    ChildProcess plain({PLAIN_APPLICATION, "--authorization-token=plain"});
    ASSERT_TRUE(plain.awaitOutput("plain is alive, RUNNING"));

    EXPECT_EQ(corvanectl({"state", "plain"}).status, 3);
}

TEST_F(Examples, PlainApplicationRefusesANumberThatIsNone)
{
    ChildProcess plain({PLAIN_APPLICATION, "--keep-alives=many"});

    EXPECT_EQ(plain.wait().status, 1);
    EXPECT_EQ(plain.getError(), "plain-application: --keep-alives needs a number\n");
}

TEST_F(Examples, PythonClientSetsAnOpacityAndHearsOfIt)
{
    HelloWindow hello;
    ChildProcess client({"/usr/bin/python3", SOURCE_FOLDER "/examples/python-client/client.py", "demo", "128"});

    EXPECT_EQ(client.wait().status, 0) << client.getError();
    EXPECT_EQ(client.getOutput(), "{'uid': 'demo', 'oldOpacity': 255, 'newOpacity': 128}\n");
}

TEST_F(Examples, PythonClientTellsWhyACallIsRefused)
{
    HelloWindow hello;
    ChildProcess client({"/usr/bin/python3", SOURCE_FOLDER "/examples/python-client/client.py", "demo", "-1"});

    EXPECT_EQ(client.wait().status, 1);
    EXPECT_THAT(client.getError(), HasSubstr("RuntimeError: opacity: expected an unsigned 32-bit number, found -1"));
}

TEST_F(Examples, PythonClientIsShownInTheGuideAsItIs)
{
    EXPECT_THAT(readFile("docs/guide/clients.md"),
                HasSubstr("```python\n" + readFile("examples/python-client/client.py") + "```\n"));
}
