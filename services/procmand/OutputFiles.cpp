#include "OutputFiles.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace Procmand
{

namespace
{

/// A file may take so much room before its beginning is given back.
constexpr off_t ROOM_LIMIT = 256 * 1024;

/// Makes a hole of everything but the end. The file keeps its length, so that writers are not disturbed.
void makeHole(const std::string& path)
{
    const Corvane::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    struct stat status {
    };
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || status.st_blocks * 512 < ROOM_LIMIT)
        return;
    const off_t end = status.st_size - ROOM_LIMIT / 2;
    // A file system without holes has its file emptied instead; writers append, so they go on at the beginning.
    if (end > 0 && fallocate(file.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, end) != 0)
        (void)!ftruncate(file.get(), 0);
}

} // namespace

OutputFiles::OutputFiles(std::string folder) : folder(std::move(folder))
{
    std::filesystem::create_directories(this->folder);
}

std::string OutputFiles::pathOf(const std::string& token, Stream stream) const
{
    return folder + "/" + token + (stream == Stream::ERROR ? ".err" : ".out");
}

Corvane::FileDescriptor OutputFiles::open(const std::string& token, Stream stream) const
{
    const std::string path = pathOf(token, stream);
    Corvane::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category(), "cannot open " + path);
    return file;
}

std::string OutputFiles::readTail(const std::string& token) const
{
    const Corvane::FileDescriptor file(::open(pathOf(token, Stream::ERROR).c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {
    };
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        return {};
    std::string tail(TAIL_SIZE, '\0');
    const off_t start = std::max<off_t>(0, status.st_size - static_cast<off_t>(TAIL_SIZE));
    const ssize_t size = pread(file.get(), tail.data(), tail.size(), start);
    tail.resize(static_cast<std::size_t>(std::max<ssize_t>(0, size)));
    return tail;
}

void OutputFiles::remove(const std::string& token) const
{
    for (const Stream stream : {Stream::OUTPUT, Stream::ERROR})
        ::unlink(pathOf(token, stream).c_str());
}

void OutputFiles::trim() const
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        makeHole(entry.path().string());
}

} // namespace Procmand
