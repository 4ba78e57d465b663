#include <corvane/foundation/DebugPrint.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvane
{

namespace
{

/// What the system writes to a pipe in one piece, however many processes share it.
constexpr std::size_t LINE_LIMIT = PIPE_BUF;
constexpr char MODULE[] = "Debug";
constexpr char COMPONENT[] = "DebugSink";

// Constant-initialised: a print by a static object of another file finds sound values before this file's turn comes.
constinit std::atomic<int> output{STDERR_FILENO};
constinit std::atomic<bool> outputIsSyslog{false};
constinit std::atomic<int> highestLevel{DEBUG_NOTICE};
constinit std::atomic<const char*> processName{nullptr};
char givenProcessName[32];

bool isControl(char character)
{
    const auto value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7f;
}

bool isContinuationOfCharacter(char character)
{
    return (static_cast<unsigned char>(character) & 0xc0) == 0x80;
}

/// One line of output, built in place: it runs in signal handlers, where memory must not be allocated.
class Line
{
public:
    void append(const char* format, ...) __attribute__((format(printf, 2, 3)))
    {
        va_list arguments;
        va_start(arguments, format);
        appendList(format, arguments);
        va_end(arguments);
    }

    void appendList(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        const std::size_t room = sizeof text - length;
        const int wanted = std::vsnprintf(text + length, room, format, arguments);
        if (wanted < 0)
            return;
        cut = cut || static_cast<std::size_t>(wanted) >= room;
        length += std::min(static_cast<std::size_t>(wanted), room - 1);
    }

    /// Makes one line of what was appended: a single line feed, at the end.
    void finish()
    {
        if (!cut && length > 0 && text[length - 1] == '\n')
            --length;
        const std::size_t room = sizeof text - 1;
        std::size_t escaped = length + ESCAPE_GROWTH * std::count_if(text, text + length, isControl);
        cut = cut || escaped > room;
        if (cut)
            shrink(escaped, room - ELLIPSIS.size());
        escapeControls(escaped);
        length = escaped;
        if (cut)
            length += ELLIPSIS.copy(text + length, ELLIPSIS.size());
        text[length++] = '\n';
    }

    std::string_view get() const { return {text, length}; }

private:
    static constexpr std::size_t ESCAPE_GROWTH = std::string_view("\\xNN").size() - 1;
    static constexpr std::string_view ELLIPSIS = "...";

    void shrink(std::size_t& escaped, std::size_t limit)
    {
        const auto dropLast = [&] { escaped -= isControl(text[--length]) ? ESCAPE_GROWTH + 1 : 1; };
        while (escaped > limit)
            dropLast();
        // A character of UTF-8 goes as a whole; it has three further bytes at most.
        for (int i = 0; i < 3 && isContinuationOfCharacter(text[length]); ++i)
            dropLast();
    }

    void escapeControls(std::size_t escaped)
    {
        const char* const DIGITS = "0123456789ABCDEF";
        char* to = text + escaped;
        // From the end, so that nothing is overwritten before it is read.
        for (const char* from = text + length; to != from;) {
            const auto character = static_cast<unsigned char>(*--from);
            *--to = static_cast<char>(character);
            if (!isControl(*to))
                continue;
            *to = DIGITS[character & 0xf];
            *--to = DIGITS[character >> 4];
            *--to = 'x';
            *--to = '\\';
        }
    }

    char text[LINE_LIMIT];
    std::size_t length = 0;
    bool cut = false;
};

const char* getProcessName()
{
    const char* const given = processName.load(std::memory_order_acquire);
    return given != nullptr ? given : program_invocation_short_name;
}

/// The rank of a level among the four that have a name, 0 for errors.
int getRank(int level)
{
    return std::clamp((level - 1) / 2, 0, 3);
}

void appendTime(Line& line)
{
    using namespace std::chrono;
    // Calendar arithmetic instead of gmtime_r and strftime: no time zone is loaded, no lock taken.
    const auto now = floor<milliseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(now - day);
    line.append("%04d-%02u-%02uT%02d:%02d:%02d.%03dZ ", static_cast<int>(date.year()),
                static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
}

void appendHead(Line& line, int level)
{
    if (!outputIsSyslog.load(std::memory_order_relaxed)) {
        appendTime(line);
        line.append("%s[%d] ", getProcessName(), static_cast<int>(getpid()));
        return;
    }
    // The facility "user" and the severities from error on: by rank, since a notice ranks below information here.
    constexpr int FACILITY_USER = 1;
    constexpr int SEVERITY_ERROR = 3;
    line.append("<%d>%s[%d]: ", FACILITY_USER * 8 + SEVERITY_ERROR + getRank(level), getProcessName(),
                static_cast<int>(getpid()));
}

using Clock = std::chrono::steady_clock;

/// How long a line waits for room, in an output whose reader is slow.
constexpr std::chrono::milliseconds PATIENCE{100};

/// The lines that found no room, and were not yet told of.
constinit std::atomic<unsigned int> lostLines{0};

/// @return whether the descriptor takes something before `end`
bool awaitRoom(int descriptor, Clock::time_point end)
{
    using namespace std::chrono;
    pollfd room{.fd = descriptor, .events = POLLOUT, .revents = 0};
    int ready;
    do {
        const auto left = std::max(ceil<milliseconds>(end - Clock::now()), milliseconds::zero());
        ready = poll(&room, 1, static_cast<int>(left.count()));
    } while (ready == -1 && errno == EINTR);
    return ready == 1;
}

/// Writes to a file, and to a descriptor that has room.
ssize_t writeNow(int descriptor, std::string_view text)
{
    ssize_t written;
    do
        written = write(descriptor, text.data(), text.size());
    while (written == -1 && errno == EINTR);
    return written;
}

/// Writes where a reader may keep the writer waiting. The descriptor is shared with other processes, so it is not made
/// non-blocking.
/// @return -1 with EAGAIN when there was no room in time
ssize_t writeToReader(int descriptor, std::string_view text, std::chrono::milliseconds patience)
{
    const auto end = Clock::now() + patience;
    const iovec whole{const_cast<char*>(text.data()), text.size()};
    ssize_t written = pwritev2(descriptor, &whole, 1, -1, RWF_NOWAIT);
    while (written == -1 && errno == EAGAIN) {
        if (!awaitRoom(descriptor, end)) {
            errno = EAGAIN;
            return -1;
        }
        written = pwritev2(descriptor, &whole, 1, -1, RWF_NOWAIT);
    }
    if (written != -1 || errno != EOPNOTSUPP)
        return written;
    // The system has no such write for this kind of file. Another writer that takes the room first makes this one wait.
    if (awaitRoom(descriptor, end))
        return writeNow(descriptor, text);
    errno = EAGAIN;
    return -1;
}

ssize_t writeInTime(int descriptor, std::string_view text, std::chrono::milliseconds patience)
{
    struct stat file = {};
    if (fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode))
        return writeNow(descriptor, text);
    return writeToReader(descriptor, text, patience);
}

/// Writes, but without the signal of a broken pipe: a reader of the lines that goes away must not end the process.
/// @return false when there was no room in time
bool writeWithoutSignal(int descriptor, std::string_view text, std::chrono::milliseconds patience)
{
    sigset_t brokenPipe;
    sigset_t previous;
    sigset_t pending;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    sigemptyset(&pending);
    sigpending(&pending);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &previous);
    const ssize_t written = writeInTime(descriptor, text, patience);
    const int problem = written == -1 ? errno : 0;
    if (problem == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        constexpr timespec AT_ONCE{};
        sigtimedwait(&brokenPipe, nullptr, &AT_ONCE);
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return problem != EAGAIN;
}

/// @return whether there was room for it
bool tellOfLostLines(int descriptor, unsigned int lost)
{
    Line text;
    appendHead(text, DEBUG_ERROR);
    text.append("E %s %s:%d %u debug lines were lost: nobody read them in time", MODULE, COMPONENT, __LINE__, lost);
    text.finish();
    return writeWithoutSignal(descriptor, text.get(), std::chrono::milliseconds::zero());
}

/// Writes a line, or counts it as lost. While nobody reads, only the first one that is lost has waited.
void writeOrCount(std::string_view line)
{
    const int descriptor = output.load(std::memory_order_relaxed);
    unsigned int lost = lostLines.exchange(0);
    if (lost > 0 && tellOfLostLines(descriptor, lost))
        lost = 0;
    if (lost > 0 || !writeWithoutSignal(descriptor, line, PATIENCE))
        lostLines += lost + 1;
}

int openSyslog()
{
    // Non-blocking: a log daemon that is stuck costs lines, not the process.
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor == -1)
        return -1;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return -1;
}

void readLevel(const char* text)
{
    int level = 0;
    const char* const end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, level);
    if (error == std::errc() && rest == end)
        highestLevel = level;
    else
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__,
                          "CORVANE_DEBUG_LEVEL: expected a number, found \"%s\"\n", text);
}

void openOutput(const char* name)
{
    const std::string_view wanted = name;
    if (wanted.empty() || wanted == "stderr")
        return;
    const bool isSyslog = wanted == "syslog";
    // Non-blocking: a named pipe without a reader is refused here instead of stopping the program's start.
    const int descriptor =
        isSyslog ? openSyslog() : open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644);
    if (descriptor == -1) {
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__,
                          "CORVANE_DEBUG_OUTPUT: cannot open %s (%s), writing to standard error\n", name,
                          std::strerror(errno));
        return;
    }
    outputIsSyslog = isSyslog;
    output = descriptor;
}

bool readEnvironment()
{
    if (const char* level = std::getenv("CORVANE_DEBUG_LEVEL"))
        readLevel(level);
    if (const char* name = std::getenv("CORVANE_DEBUG_OUTPUT"))
        openOutput(name);
    return true;
}

[[maybe_unused]] const bool environmentRead = readEnvironment();

} // namespace

void corvaneDebugPrint(DebugLevel level, const char* module, const char* component, int line, const char* format, ...)
{
    if (level > highestLevel.load(std::memory_order_relaxed))
        return;
    const int savedErrno = errno;
    Line text;
    appendHead(text, level);
    text.append("%c %s %s:%d ", "EWIN"[getRank(level)], module, component, line);
    va_list arguments;
    va_start(arguments, format);
    text.appendList(format, arguments);
    va_end(arguments);
    text.finish();
    writeOrCount(text.get());
    errno = savedErrno;
}

void debugInitialize(const char* name)
{
    if (name == nullptr || *name == '\0')
        return;
    givenProcessName[std::string_view(name).copy(givenProcessName, sizeof givenProcessName - 1)] = '\0';
    processName.store(givenProcessName, std::memory_order_release);
}

} // namespace Corvane
