#include "launch/OutputFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// @return the token as the beginning of a file name: nothing in it leads elsewhere, and it has no dot
std::string fileNameOf(const std::string& token)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string name;
    for (const char c : token) {
        const auto byte = static_cast<unsigned char>(c);
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-')
            name += c;
        else
            name += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    return name;
}

bool hasContent(const std::string& path)
{
    struct stat status {
    };
    return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

Corvane::FileDescriptor openNew(const std::string& path)
{
    Corvane::FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category(), "cannot open " + path);
    return file;
}

} // namespace

OutputFiles::OutputFiles(std::string folder) : folder(std::move(folder))
{
    std::filesystem::create_directories(this->folder);
}

std::string OutputFiles::pathOf(const std::string& token, Stream stream, unsigned int run) const
{
    return folder + "/" + fileNameOf(token) + (stream == Stream::ERROR ? ".err" : ".out") +
           (run == 0 ? "" : "." + std::to_string(run));
}

OutputFiles::Run OutputFiles::beginRun(const std::string& token) const
{
    putEarlierRunsBack(token);
    return {.output = openNew(pathOf(token, Stream::OUTPUT)), .error = openNew(pathOf(token, Stream::ERROR))};
}

void OutputFiles::putEarlierRunsBack(const std::string& token) const
{
    // One that printed nothing, or could not be started at all, takes no place from the others.
    if (!hasContent(pathOf(token, Stream::OUTPUT)) && !hasContent(pathOf(token, Stream::ERROR)))
        return;
    for (const Stream stream : {Stream::OUTPUT, Stream::ERROR})
        for (unsigned int run = RUN_LIMIT - 1; run > 0; --run)
            std::rename(pathOf(token, stream, run - 1).c_str(), pathOf(token, stream, run).c_str());
}

std::string OutputFiles::readTail(const std::string& token, Stream stream) const
{
    const Corvane::FileDescriptor file(::open(pathOf(token, stream).c_str(), O_RDONLY | O_CLOEXEC));
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

void OutputFiles::keepOnly(const std::set<std::string>& tokens) const
{
    std::set<std::string> names;
    for (const std::string& token : tokens)
        names.insert(fileNameOf(token));
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (names.count(name.substr(0, name.find('.'))) == 0)
            ::unlink(entry.path().c_str());
    }
}

std::uint64_t OutputFiles::trim(const std::string& name) const
{
    const Corvane::FileDescriptor file(::open((folder + "/" + name).c_str(), O_WRONLY | O_CLOEXEC));
    struct stat status {
    };
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        return 0;
    const auto room = static_cast<std::uint64_t>(status.st_blocks) * 512;
    if (room <= ROOM_LIMIT)
        return room;
    // A hole, so that the file keeps its length and writers are not disturbed. A file system without holes has its file
    // emptied instead; writers append, so they go on at the beginning.
    const off_t end = status.st_size - static_cast<off_t>(ROOM_LIMIT / 2);
    if (end > 0 && fallocate(file.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, end) != 0)
        (void)!ftruncate(file.get(), 0);
    return room;
}

void OutputFiles::trimAll() const
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        trim(entry.path().filename().string());
}

} // namespace Procmand
