#include "history/History.h"

#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

namespace Procmand
{

namespace
{

constexpr std::size_t LONG_GROWTH = 4 * 1024 * 1024;

bool writeWhole(int descriptor, const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

History::History(std::string path) : path(std::move(path))
{
    open();
    char last = '\n';
    const off_t size = lseek(file.get(), 0, SEEK_END);
    if (size > 0 && pread(file.get(), &last, 1, size - 1) == 1 && last != '\n')
        writeWhole(file.get(), "\n");
}

void History::open()
{
    file.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category(), "cannot open the history " + path);
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
    // In one call, so that a process manager that is killed leaves whole records or none.
    if (!writeWhole(file.get(), record + "\n"))
        report("write");
}

bool History::isLong() const
{
    struct stat status {
    };
    return fstat(file.get(), &status) == 0 && static_cast<std::size_t>(status.st_size) > rewrittenSize + LONG_GROWTH;
}

void History::rewrite(const std::vector<std::string>& records)
{
    const std::string temporary = path + ".new";
    std::string text;
    for (const std::string& record : records)
        text += record + "\n";
    Corvane::FileDescriptor output(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!output.isOpen() || !writeWhole(output.get(), text) || fdatasync(output.get()) != 0 ||
        rename(temporary.c_str(), path.c_str()) != 0)
        return report("rewrite");
    rewrittenSize = text.size();
    open();
}

void History::report(const char* action)
{
    if (!failed)
        Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "History", __LINE__, "cannot %s %s: %s\n", action,
                                   path.c_str(), std::strerror(errno));
    failed = true;
}

} // namespace Procmand
