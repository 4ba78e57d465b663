#include "history/History.h"

#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// @return how many bytes of the text were written; errno tells why it is not all of them
std::size_t writeSome(int descriptor, const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        written += static_cast<std::size_t>(count);
    }
    return written;
}

} // namespace

History::History(std::string path) : path(std::move(path))
{
    file.reset(::open(this->path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    struct stat status {
    };
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot open the history " + this->path);
    size = static_cast<std::size_t>(status.st_size);
    rewrittenSize = size;
    char last = '\n';
    if (size > 0 && pread(file.get(), &last, 1, status.st_size - 1) == 1 && last != '\n') {
        waiting = "\n";
        retry();
    }
}

std::vector<std::string> History::read() const
{
    std::ifstream input(path);
    std::vector<std::string> records;
    for (std::string line; std::getline(input, line);)
        if (!line.empty())
            records.push_back(line);
    return records;
}

void History::append(const std::string& record)
{
    waiting += record + "\n";
    retry();
}

void History::retry()
{
    if (waiting.empty() || wholes > 0)
        return;
    errno = EFBIG;
    const bool hasRoom = size + waiting.size() <= rewrittenSize + GROWTH_LIMIT;
    const std::size_t written = hasRoom ? writeSome(file.get(), waiting) : 0;
    size += written;
    const int error = errno;
    waiting.erase(0, written);
    if (waiting.empty()) {
        failed = failed && isLong(); // the trouble is not over
        return;
    }
    errno = error;
    report("write");
    if (waiting.size() > WAITING_LIMIT)
        dropWaiting();
}

void History::dropWaiting()
{
    isIncomplete = true;
    // The file may end within a record.
    waiting = "\n";
}

bool History::rewrite(const std::vector<std::string>& records)
{
    const std::string temporary = path + ".new";
    std::string text;
    for (const std::string& record : records)
        text += record + "\n";
    ::unlink(temporary.c_str()); // a process manager that was killed may have left it
    constexpr int FLAGS = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_APPEND | O_CLOEXEC;
    Corvane::FileDescriptor output(::open(temporary.c_str(), FLAGS, 0600));
    if (!output.isOpen())
        return report("rewrite");
    if (writeSome(output.get(), text) != text.size() || fdatasync(output.get()) != 0 ||
        rename(temporary.c_str(), path.c_str()) != 0) {
        report("rewrite");
        ::unlink(temporary.c_str()); // a full disk has better use for its room
        return false;
    }
    file = std::move(output);
    size = text.size();
    rewrittenSize = size;
    waiting.clear();
    isIncomplete = false;
    failed = false;
    return true;
}

bool History::report(const char* action)
{
    if (!failed)
        Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "History", __LINE__, "cannot %s %s: %s\n", action,
                                   path.c_str(), std::strerror(errno));
    failed = true;
    return false;
}

} // namespace Procmand
