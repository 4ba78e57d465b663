#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <support/CapturedOutput.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> messagesIn(const std::string& text)
{
    std::vector<std::string> messages;
    for (const DebugLine& line : parseDebugLines(text))
        messages.push_back(line.message);
    return messages;
}

/// Where the lines of a program go, and which of them.
class DebugOutput : public testing::Test
{
protected:
    /// Runs the program that prints one line of each level, 1 to 9. @return what it wrote to standard error
    std::string run(const ChildProcess::Environment& environment)
    {
        ChildProcess::Environment all{{"CORVANE_DEBUG_LEVEL", {}}, {"CORVANE_DEBUG_OUTPUT", {}}};
        for (const auto& [name, value] : environment)
            all[name] = value;
        ChildProcess child({DEBUG_PRINT_CHILD}, all);
        EXPECT_EQ(child.wait().status, 0);
        return child.getError();
    }
    std::string pathOf(const std::string& name) const { return directory.getPath() + "/" + name; }
    static std::string read(const std::string& path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    TemporaryDirectory directory;
};

TEST_F(DebugOutput, IsStandardErrorUpToLevelSevenByDefault)
{
    const auto messages = messagesIn(run({}));

    EXPECT_THAT(messages, ElementsAre("level 1", "level 2", "level 3", "level 4", "level 5", "level 6", "level 7"));
}

TEST_F(DebugOutput, EndsAtTheHighestLevelAskedFor)
{
    EXPECT_THAT(messagesIn(run({{"CORVANE_DEBUG_LEVEL", "2"}})), ElementsAre("level 1", "level 2"));
    EXPECT_THAT(messagesIn(run({{"CORVANE_DEBUG_LEVEL", "9"}})), SizeIs(9));
    EXPECT_EQ(run({{"CORVANE_DEBUG_LEVEL", "0"}}), "");
}

TEST_F(DebugOutput, SaysThatALevelIsNoNumberAndUsesTheDefault)
{
    for (const char* level : {"", "high", "3x", "99999999999"}) {
        const auto messages = messagesIn(run({{"CORVANE_DEBUG_LEVEL", level}}));

        ASSERT_THAT(messages, SizeIs(8)) << level;
        EXPECT_EQ(messages[0], "CORVANE_DEBUG_LEVEL: expected a number, found \"" + std::string(level) + "\"");
    }
}

TEST_F(DebugOutput, MayBeNamedStandardError)
{
    EXPECT_THAT(messagesIn(run({{"CORVANE_DEBUG_OUTPUT", "stderr"}})), SizeIs(7));
    EXPECT_THAT(messagesIn(run({{"CORVANE_DEBUG_OUTPUT", ""}})), SizeIs(7));
}

TEST_F(DebugOutput, AppendsToAFile)
{
    std::ofstream(pathOf("log")) << "before\n";

    EXPECT_EQ(run({{"CORVANE_DEBUG_OUTPUT", pathOf("log")}}), "");
    EXPECT_EQ(run({{"CORVANE_DEBUG_OUTPUT", pathOf("log")}}), "");

    EXPECT_THAT(read(pathOf("log")), StartsWith("before\n"));
    EXPECT_THAT(messagesIn(read(pathOf("log"))), SizeIs(14));
}

TEST_F(DebugOutput, FallsBackToStandardErrorWhenTheFileCannotBeOpenedAndSaysSo)
{
    const auto messages = messagesIn(run({{"CORVANE_DEBUG_OUTPUT", pathOf("missing/log")}}));

    ASSERT_THAT(messages, SizeIs(8));
    EXPECT_EQ(messages[0], "CORVANE_DEBUG_OUTPUT: cannot open " + pathOf("missing/log") +
                               " (No such file or directory), writing to standard error");
}

TEST_F(DebugOutput, DoesNotWaitForTheReaderOfANamedPipe)
{
    ASSERT_EQ(mkfifo(pathOf("pipe").c_str(), 0600), 0);

    const auto messages = messagesIn(run({{"CORVANE_DEBUG_OUTPUT", pathOf("pipe")}}));

    ASSERT_THAT(messages, SizeIs(8));
    EXPECT_THAT(messages[0], HasSubstr("cannot open"));
}

TEST_F(DebugOutput, SendsDatagramsToTheLogDaemon)
{
    const int daemon = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    pathOf("daemon").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(daemon, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    EXPECT_EQ(run({{"CORVANE_DEBUG_OUTPUT", "syslog"}, {"TEST_LOG_DAEMON", pathOf("daemon")}}), "");

    std::vector<std::string> datagrams;
    char datagram[8192];
    for (ssize_t size; (size = recv(daemon, datagram, sizeof datagram, 0)) > 0;)
        datagrams.emplace_back(datagram, static_cast<std::size_t>(size));
    close(daemon);
    ASSERT_THAT(datagrams, SizeIs(7));
    EXPECT_THAT(datagrams[0], MatchesRegex("<11>debug-print-child\\[[0-9]+\\]: E Module child:1 level 1\n"));
    EXPECT_THAT(datagrams[2], StartsWith("<12>"));
    EXPECT_THAT(datagrams[4], StartsWith("<13>"));
    EXPECT_THAT(datagrams[6], MatchesRegex("<14>debug-print-child\\[[0-9]+\\]: N Module child:7 level 7\n"));
}

TEST_F(DebugOutput, FallsBackToStandardErrorWithoutALogDaemon)
{
    const auto messages = messagesIn(run({{"CORVANE_DEBUG_OUTPUT", "syslog"}, {"TEST_LOG_DAEMON", pathOf("nobody")}}));

    ASSERT_THAT(messages, SizeIs(8));
    EXPECT_EQ(messages[0],
              "CORVANE_DEBUG_OUTPUT: cannot open syslog (No such file or directory), writing to standard error");
}

#ifdef EARLY_PRINT_CHILD
TEST_F(DebugOutput, IsStandardErrorForALineThatComesBeforeTheLibraryIsInitialised)
{
    ChildProcess child({EARLY_PRINT_CHILD}, {{"CORVANE_DEBUG_OUTPUT", pathOf("log")}, {"CORVANE_DEBUG_LEVEL", "1"}});
    ASSERT_EQ(child.wait().status, 0);

    EXPECT_THAT(messagesIn(child.getError()), ElementsAre("before the library's initialisation"));
    EXPECT_THAT(messagesIn(read(pathOf("log"))), ElementsAre("level 1"));
}
#endif

} // namespace
} // namespace Corvane::Test
