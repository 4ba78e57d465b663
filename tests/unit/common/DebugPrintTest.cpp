#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Export.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <support/CapturedOutput.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>

namespace
{

/// Whether this process sees a system that writes to a pipe without waiting; Linux does since 6.4.
bool systemWritesAtOnce = true;

} // namespace

/// The system's own, but for what a test asked for.
extern "C" CORVANE_EXPORT ssize_t pwritev2(int descriptor, const iovec* pieces, int count, off_t position, int flags)
{
    const long written = systemWritesAtOnce ? syscall(SYS_pwritev2, descriptor, pieces, static_cast<long>(count),
                                                      static_cast<long>(position), -1L, flags)
                                            : -1;
    // An emulator has no such call at all, which the C library tells like this.
    if (!systemWritesAtOnce || (written == -1 && errno == ENOSYS))
        errno = EOPNOTSUPP;
    return written;
}

namespace Corvane::Test
{
namespace
{

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

/// The message as it comes out, of a line that is printed with this text.
std::string printed(const std::string& text)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "Module", "component", 7, "%s", text.c_str());
    const auto messages = error.getMessages();
    return messages.size() == 1 ? messages[0] : "not one line: " + error.getText();
}

TEST(DebugPrint, WritesTimeProcessLevelModuleComponentLineAndMessage)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "Module", "component", 42, "%s is %d", "answer", 42);

    const std::string process = std::string(program_invocation_short_name) + "\\[" + std::to_string(getpid()) + "\\]";
    EXPECT_THAT(error.getText(), MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z " +
                                              process + " E Module component:42 answer is 42\n"));
}

/// The second of the clock that the lines carry. `std::time` reads another one, which is some milliseconds behind.
std::time_t currentSecond()
{
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST(DebugPrint, GivesTheTimeInUtc)
{
    CapturedOutput error;
    const std::time_t before = currentSecond();
    corvaneDebugPrint(DEBUG_ERROR, "Module", "component", 1, "now");
    const std::time_t after = currentSecond();

    std::tm printed{};
    ASSERT_NE(strptime(error.getText().c_str(), "%Y-%m-%dT%H:%M:%S", &printed), nullptr);
    EXPECT_GE(timegm(&printed), before);
    EXPECT_LE(timegm(&printed), after);
}

TEST(DebugPrint, NamesTheLevelByALetter)
{
    CapturedOutput error;
    for (int level = 1; level <= DEBUG_NOTICE; ++level)
        corvaneDebugPrint(static_cast<DebugLevel>(level), "Module", "component", level, "x");

    std::string letters;
    for (const DebugLine& line : error.getDebugLines())
        letters += line.level;
    EXPECT_EQ(letters, "EEWWIIN");
}

TEST(DebugPrint, DropsLinesAboveTheNoticeLevel)
{
    CapturedOutput error;
    corvaneDebugPrint(static_cast<DebugLevel>(8), "Module", "component", 1, "x");

    EXPECT_EQ(error.getText(), "");
}

TEST(DebugPrint, EndsWithOneLineFeedWhetherTheFormatHasOneOrNot)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "without");
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "with\n");

    EXPECT_THAT(error.getLines(), ElementsAre(EndsWith(" without"), EndsWith(" with")));
}

TEST(DebugPrint, WritesControlCharactersAsHexadecimalNumbers)
{
    EXPECT_EQ(printed("a\nb\tc\x1b[31m\x7f\n"), "a\\x0Ab\\x09c\\x1B[31m\\x7F");
    EXPECT_EQ(printed("two\n\n"), "two\\x0A");
    EXPECT_EQ(printed("\n\n\n"), "\\x0A\\x0A");

    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "Module", "component", 1, "a%cb", '\0');
    EXPECT_THAT(error.getMessages(), ElementsAre("a\\x00b"));
}

TEST(DebugPrint, LeavesOtherCharactersAsTheyAre)
{
    EXPECT_EQ(printed("\"gr\xc3\xbc\xc3\x9f\x65\" \\ ~"), "\"gr\xc3\xbc\xc3\x9f\x65\" \\ ~");
}

TEST(DebugPrint, KeepsALineThatJustFits)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", "");
    const std::size_t head = error.getText().size();
    const std::string message(PIPE_BUF - head, 'x');
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", message.c_str());

    EXPECT_EQ(error.getMessages().at(1), message);
    EXPECT_EQ(error.getText().size(), head + PIPE_BUF);
}

TEST(DebugPrint, CutsALineThatIsTooLongAndSaysSo)
{
    CapturedOutput error;
    const std::string message(2 * PIPE_BUF, 'x');
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", message.c_str());

    EXPECT_EQ(error.getText().size(), static_cast<std::size_t>(PIPE_BUF));
    EXPECT_THAT(error.getText(), EndsWith("x...\n"));
}

TEST(DebugPrint, CutsALineThatGetsTooLongByItsControlCharacters)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", std::string(PIPE_BUF / 2, '\t').c_str());

    EXPECT_LE(error.getText().size(), static_cast<std::size_t>(PIPE_BUF));
    EXPECT_GT(error.getText().size(), static_cast<std::size_t>(PIPE_BUF) - 4);
    EXPECT_THAT(error.getText(), EndsWith("\\x09\\x09...\n"));
}

TEST(DebugPrint, CutsNoCharacterInTwo)
{
    for (std::string padding; padding.size() < 3; padding += "x") {
        std::string message = padding;
        while (message.size() < 2 * PIPE_BUF)
            message += "\xe2\x82\xac";
        CapturedOutput error;
        corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", message.c_str());

        EXPECT_THAT(error.getText(), EndsWith("\xe2\x82\xac...\n"));
        EXPECT_GT(error.getText().size(), static_cast<std::size_t>(PIPE_BUF) - 4);
    }
}

TEST(DebugPrint, SurvivesAMessageOfContinuationBytesOnly)
{
    CapturedOutput error;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", std::string(2 * PIPE_BUF, '\x80').c_str());

    EXPECT_THAT(error.getText(), EndsWith("\x80...\n"));
}

TEST(DebugPrint, KeepsErrno)
{
    CapturedOutput error;
    errno = EDOM;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "x");
    EXPECT_EQ(errno, EDOM);

    const int standardError = dup(STDERR_FILENO);
    close(STDERR_FILENO);
    errno = ERANGE;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "nowhere to go");
    EXPECT_EQ(errno, ERANGE);
    dup2(standardError, STDERR_FILENO);
    close(standardError);
}

TEST(DebugPrint, CarriesTheNameGivenToDebugInitialize)
{
    CapturedOutput error;
    debugInitialize(nullptr);
    debugInitialize("");
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "x");
    debugInitialize("box manager");
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "x");
    debugInitialize("0123456789012345678901234567890-and-more");
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "x");

    const auto lines = error.getDebugLines();
    debugInitialize(program_invocation_short_name);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].process, program_invocation_short_name);
    EXPECT_EQ(lines[1].process, "box manager");
    EXPECT_EQ(lines[2].process, "0123456789012345678901234567890");
}

/// Standard error as a pipe.
class DebugPrintPipe : public testing::Test
{
protected:
    DebugPrintPipe() : standardError(dup(STDERR_FILENO))
    {
        EXPECT_EQ(pipe(ends), 0);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    ~DebugPrintPipe() override
    {
        restore();
        close(ends[0]);
    }
    void restore()
    {
        dup2(standardError, STDERR_FILENO);
        close(standardError);
        standardError = -1;
    }
    std::string readToEnd() const
    {
        std::string text;
        char chunk[65536];
        for (ssize_t count; (count = read(ends[0], chunk, sizeof chunk)) > 0;)
            text.append(chunk, static_cast<std::size_t>(count));
        return text;
    }

    int ends[2];
    int standardError;
};

TEST_F(DebugPrintPipe, WritesALineInOnePiece)
{
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "%s", std::string(2 * PIPE_BUF, 'x').c_str());

    char line[2 * PIPE_BUF];
    EXPECT_EQ(read(ends[0], line, sizeof line), PIPE_BUF);
}

constexpr int THREADS = 8;
constexpr int LINES = 200;
std::atomic<int> signalLines{0};

void printFromSignalHandler(int)
{
    corvaneDebugPrint(DEBUG_NOTICE, "Signal", "handler", 1, "%d interrupted", signalLines++);
}

/// The message of a line that a thread prints; each thread's have a length of their own.
std::string messageOfThread(int thread, int line)
{
    return std::to_string(line) + " " + std::string(static_cast<std::size_t>(500 * thread), 'x') + " end";
}

/// Prints LINES lines from each of THREADS threads and about as many from a signal handler that interrupts them.
void printFromThreadsAndSignalHandler()
{
    // The handler waits for the reader of the pipe. So it must interrupt nobody who holds the lock of the heap, which
    // the reader may need: the threads neither start nor end while there are signals, and allocate nothing in between.
    std::atomic<int> startedThreads{0};
    std::atomic<bool> signalsAreOver{false};
    std::vector<std::thread> writers;
    for (int i = 0; i < THREADS; ++i) {
        writers.emplace_back([&, i] {
            std::vector<std::string> messages;
            for (int line = 0; line < LINES; ++line)
                messages.push_back(messageOfThread(i, line));
            ++startedThreads;
            for (const std::string& message : messages)
                corvaneDebugPrint(DEBUG_ERROR, "Thread", "writer", i, "%s", message.c_str());
            while (!signalsAreOver)
                std::this_thread::yield();
            sigset_t late;
            sigemptyset(&late);
            sigaddset(&late, SIGUSR1);
            pthread_sigmask(SIG_BLOCK, &late, nullptr);
        });
    }
    while (startedThreads < THREADS)
        std::this_thread::yield();
    while (signalLines < LINES) {
        for (std::thread& writer : writers)
            pthread_kill(writer.native_handle(), SIGUSR1);
    }
    signalsAreOver = true;
    for (std::thread& writer : writers)
        writer.join();
}

TEST_F(DebugPrintPipe, KeepsLinesWholeThatThreadsAndASignalHandlerWriteAtOnce)
{
    struct sigaction action = {};
    struct sigaction previous = {};
    action.sa_handler = printFromSignalHandler;
    sigaction(SIGUSR1, &action, &previous);
    signalLines = 0;
    std::string text;
    std::thread reader([&] { text = readToEnd(); });
    printFromThreadsAndSignalHandler();
    sigaction(SIGUSR1, &previous, nullptr);
    corvaneDebugPrint(DEBUG_ERROR, "Main", "main", 1, "the end");
    restore();
    reader.join();

    const auto lines = parseDebugLines(text);
    EXPECT_EQ(lines.size(), splitLines(text).size()) << "every line begins as a debug line";
    // Where the machine is busy the reader may be late, and lines get lost; then that is said.
    std::map<int, int> nextOfThread;
    int found = 0;
    for (const DebugLine& line : lines) {
        if (line.module == "Debug") {
            found += std::stoi(line.message);
            continue;
        }
        ++found;
        if (line.module == "Thread") {
            const int number = std::stoi(line.message);
            EXPECT_GE(number, nextOfThread[line.line]);
            EXPECT_EQ(line.message, messageOfThread(line.line, number));
            nextOfThread[line.line] = number + 1;
        } else {
            EXPECT_THAT(line.message, MatchesRegex("[0-9]+ interrupted|the end"));
        }
    }
    EXPECT_EQ(found, THREADS * LINES + signalLines + 1);
}

/// A pipe that is full, on a system that can write to it at once, and on one that cannot.
class FullDebugPrintPipe : public DebugPrintPipe, public testing::WithParamInterface<bool>
{
protected:
    FullDebugPrintPipe()
    {
        systemWritesAtOnce = GetParam();
        const std::string page(static_cast<std::size_t>(fcntl(STDERR_FILENO, F_SETPIPE_SZ, 4 * PIPE_BUF)), 'x');
        EXPECT_EQ(write(STDERR_FILENO, page.data(), page.size()), static_cast<ssize_t>(page.size()));
    }
    ~FullDebugPrintPipe() override { systemWritesAtOnce = true; }
    std::string readAll() const
    {
        std::string text(65536, '\0');
        text.resize(static_cast<std::size_t>(read(ends[0], text.data(), text.size())));
        return text;
    }
};

TEST_P(FullDebugPrintPipe, CostsLinesInsteadOfTimeAndSaysAfterwardsHowMany)
{
    // A line that waited for the reader would wait for ever, and all of them must not take as long as each of them may.
    constexpr int MANY = 300;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < MANY; ++i)
        corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "nobody reads this");
    EXPECT_LT(std::chrono::steady_clock::now() - start, MANY * std::chrono::milliseconds(100) / 2);

    readAll();
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "somebody reads this");
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "and this");
    std::vector<std::string> messages;
    for (const DebugLine& line : parseDebugLines(readAll()))
        messages.push_back(line.message);
    EXPECT_THAT(messages,
                ElementsAre("300 debug lines were lost: nobody read them in time", "somebody reads this", "and this"));
}

INSTANTIATE_TEST_SUITE_P(Systems, FullDebugPrintPipe, testing::Bool(),
                         [](const auto& each) { return each.param ? "WriteAtOnce" : "AsBefore64"; });

TEST_F(DebugPrintPipe, SurvivesAReaderThatGoesAway)
{
    close(ends[0]);
    errno = EDOM;
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "nobody reads this");

    EXPECT_EQ(errno, EDOM);
    sigset_t pending;
    sigpending(&pending);
    EXPECT_FALSE(sigismember(&pending, SIGPIPE)) << "no signal is left behind";
}

TEST_F(DebugPrintPipe, LeavesASignalThatWasPendingBefore)
{
    sigset_t brokenPipe;
    sigset_t previous;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &previous);
    pthread_kill(pthread_self(), SIGPIPE);
    close(ends[0]);
    corvaneDebugPrint(DEBUG_ERROR, "M", "c", 1, "nobody reads this");

    const timespec atOnce{};
    EXPECT_EQ(sigtimedwait(&brokenPipe, nullptr, &atOnce), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

} // namespace
} // namespace Corvane::Test
